// read LIST [THREADS]: what TagLib alone needs to open every file of a list and visit every frame, item and
// field with its value; nothing is decoded.

#include "Formats.h"
#include "Measure.h"

#include <attachedpictureframe.h>
#include <commentsframe.h>
#include <generalencapsulatedobjectframe.h>
#include <privateframe.h>
#include <textidentificationframe.h>
#include <xiphcomment.h>

#include <atomic>
#include <cstdlib>
#include <set>
#include <thread>

namespace {

struct Sums {
    std::uint64_t files = 0;
    std::uint64_t texts = 0;
    std::uint64_t pictures = 0;
    std::uint64_t payloads = 0;
    std::uint64_t rest = 0;

    void add(const Sums& other) {
        files += other.files;
        texts += other.texts;
        pictures += other.pictures;
        payloads += other.payloads;
        rest += other.rest;
    }
};

std::uint64_t lengthOf(const TagLib::String& text) {
    return text.to8Bit(true).size();
}

// The library's own records, and of Serato's payloads those that every format carries.
bool isPayload(const std::string& name) {
    static const std::set<std::string> names = {"Key",
                                                "Energy",
                                                "BeatGrid",
                                                "CuePoints",
                                                "Serato Markers2",
                                                "Serato BeatGrid",  // ID3v2
                                                "----:com.quorvantis.quorvantis:key",
                                                "----:com.quorvantis.quorvantis:energy",
                                                "----:com.quorvantis.quorvantis:beatgrid",
                                                "----:com.quorvantis.quorvantis:cuepoints",
                                                "----:com.serato.dj:markersv2",
                                                "----:com.serato.dj:beatgrid",  // MP4
                                                "KEY",
                                                "ENERGY",
                                                "BEATGRID",
                                                "CUEPOINTS",
                                                "SERATO_MARKERS_V2",
                                                "SERATO_BEATGRID"};  // FLAC
    return names.contains(name);
}

void readBasic(const TagLib::Tag& tag, Sums& sums) {
    for (const TagLib::String& text : {tag.title(), tag.artist(), tag.album(), tag.genre()}) {
        sums.texts += lengthOf(text);
    }
}

void visit(TagLib::ID3v2::Tag& tag, Sums& sums) {
    readBasic(tag, sums);
    for (const TagLib::ID3v2::Frame* frame : tag.frameList()) {
        if (const auto* picture = dynamic_cast<const TagLib::ID3v2::AttachedPictureFrame*>(frame)) {
            sums.pictures += TagLib::ByteVector(picture->picture()).size();
        } else if (const auto* object =
                       dynamic_cast<const TagLib::ID3v2::GeneralEncapsulatedObjectFrame*>(frame)) {
            sums.rest += object->object().size();
            sums.payloads += isPayload(object->description().to8Bit(true));
        } else if (const auto* data = dynamic_cast<const TagLib::ID3v2::PrivateFrame*>(frame)) {
            sums.rest += data->data().size() + lengthOf(data->owner());
        } else {
            const std::uint64_t length = lengthOf(frame->toString());
            (frame->frameID() == "TKEY" ? sums.texts : sums.rest) += length;
        }
    }
}

void visit(TagLib::MP4::Tag& tag, Sums& sums) {
    readBasic(tag, sums);
    for (const auto& [name, item] : tag.itemMap()) {
        const std::string key = name.to8Bit(true);
        sums.payloads += isPayload(key);
        for (const TagLib::MP4::CoverArt& picture : item.toCoverArtList()) {
            sums.pictures += picture.data().size();
        }
        for (const TagLib::String& text : item.toStringList()) {
            (key == "----:com.apple.iTunes:initialkey" ? sums.texts : sums.rest) += lengthOf(text);
        }
    }
}

void visit(TagLib::Ogg::XiphComment& tag, Sums& sums) {
    readBasic(tag, sums);
    for (const auto& [name, values] : tag.fieldListMap()) {
        const std::string key = name.to8Bit(true);
        sums.payloads += isPayload(key);
        for (const TagLib::String& text : values) {
            (key == "INITIALKEY" ? sums.texts : sums.rest) += lengthOf(text);
        }
    }
}

void visitFile(TagLib::File& file, Sums& sums) {
    auto* flac = dynamic_cast<TagLib::FLAC::File*>(&file);
    if (flac == nullptr) return;
    for (const TagLib::FLAC::Picture* picture : flac->pictureList()) {
        sums.pictures += picture->data().size();
    }
}

void read(const std::string& path, Sums& sums) {
    const bool isRead = withFile(path, [&sums](auto& file, auto* tag) {
        visit(*tag, sums);
        visitFile(file, sums);
        return file.isValid();
    });
    if (!isRead) std::abort();
    ++sums.files;
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 2) return 2;
    std::vector<std::string> paths;
    forEachLine(arguments[1], [&paths](const std::string& path) { paths.push_back(path); });
    std::vector<Sums> sums(count > 2 ? std::strtoul(arguments[2], nullptr, 10) : 1);
    std::atomic<std::size_t> next = 0;
    const auto work = [&](Sums& own) {
        for (std::size_t i = next++; i < paths.size(); i = next++) {
            read(paths[i], own);
        }
    };
    Measure measure;
    measure.start();
    std::vector<std::thread> threads;
    for (std::size_t i = 1; i < sums.size(); ++i) {
        threads.emplace_back(work, std::ref(sums[i]));
    }
    work(sums[0]);
    for (std::thread& thread : threads) {
        thread.join();
    }
    measure.stop();
    for (std::size_t i = 1; i < sums.size(); ++i) {
        sums[0].add(sums[i]);
    }
    measure.found("files", sums[0].files);
    measure.found("bytes of texts", sums[0].texts);
    measure.found("bytes of pictures", sums[0].pictures);
    measure.found("payloads", sums[0].payloads);
    measure.print();
    return sums[0].rest == 0;
}
