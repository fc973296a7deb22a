// save fields|page|grow ROUND LIST [PASSES]: the same changes by TagLib alone, which edits the file in place
// and leaves it torn when it is stopped on the way.
//
// save copy ROUND LIST: the least that leaves the old file or the new one: the kernel copies it, and the copy
// is renamed over it. With -sync behind the change, what was written reaches the disk before the next file.
//
// save verify ROUND LIST: counts what stands in the files.

#include "Formats.h"
#include "Measure.h"

#include <commentsframe.h>
#include <id3v1tag.h>
#include <textidentificationframe.h>
#include <xiphcomment.h>

#include <cstdlib>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

void finish(bool done) {
    if (!done) std::abort();
}

std::string sameLength(const TagLib::String& text, char round) {
    const std::string bytes = text.to8Bit(true);
    finish(!bytes.empty());
    return bytes.substr(0, bytes.size() - 1) + round;
}

TagLib::String text(const std::string& bytes) {
    return TagLib::String(bytes, TagLib::String::UTF8);
}

TagLib::String keyOf(TagLib::ID3v2::Tag& tag) {
    return tag.frameList("TKEY").front()->toString();
}

void setKey(TagLib::ID3v2::Tag& tag, const std::string& key) {
    tag.frameList("TKEY").front()->setText(text(key));
}

constexpr const char* keyItem = "----:com.apple.iTunes:initialkey";

TagLib::String keyOf(TagLib::MP4::Tag& tag) {
    return tag.item(keyItem).toStringList().front();
}

void setKey(TagLib::MP4::Tag& tag, const std::string& key) {
    tag.setItem(keyItem, TagLib::StringList(text(key)));
}

TagLib::String keyOf(TagLib::Ogg::XiphComment& tag) {
    return tag.fieldListMap()["INITIALKEY"].front();
}

void setKey(TagLib::Ogg::XiphComment& tag, const std::string& key) {
    tag.addField("INITIALKEY", text(key));
}

TagLib::ID3v2::Version versionOf(const TagLib::ID3v2::Tag& tag) {
    return tag.header()->majorVersion() == 4 ? TagLib::ID3v2::v4 : TagLib::ID3v2::v3;
}

// In the version of ID3v2 that the file has; an ID3v1 tag is written where there is one.
bool save(TagLib::MPEG::File& file) {
    const int tags = TagLib::MPEG::File::ID3v2 | (file.hasID3v1Tag() ? TagLib::MPEG::File::ID3v1 : 0);
    return file.save(tags, TagLib::File::StripNone, versionOf(*file.ID3v2Tag()),
                     TagLib::File::DoNotDuplicate);
}

bool save(TagLib::RIFF::WAV::File& file) {
    return file.save(TagLib::RIFF::WAV::File::ID3v2, TagLib::File::StripNone, versionOf(*file.ID3v2Tag()));
}

bool save(TagLib::RIFF::AIFF::File& file) {
    return file.save(versionOf(*file.tag()));
}

bool save(TagLib::File& file) {
    return file.save();
}

void setID3v1(TagLib::File& file, const TagLib::Tag& tag) {
    auto* mp3 = dynamic_cast<TagLib::MPEG::File*>(&file);
    if (mp3 == nullptr || !mp3->hasID3v1Tag()) return;
    TagLib::ID3v1::Tag* old = mp3->ID3v1Tag();
    old->setTitle(tag.title());
    old->setComment(tag.comment());
}

bool saveByTagLib(const std::string& path, const std::string& what, char round) {
    return withFile(path, [&](auto& file, auto* tag) {
        if (what == "fields") {
            tag->setTitle(text(sameLength(tag->title(), round)));
            tag->setComment(text(sameLength(tag->comment(), round)));
        } else if (what == "page") {
            setKey(*tag, sameLength(keyOf(*tag), round));
        } else {
            tag->setComment(text(std::string(1500, round)));
        }
        setID3v1(file, *tag);
        return save(file);
    });
}

void syncPath(const std::string& path) {
    const int file = ::open(path.c_str(), O_RDONLY);
    finish(::fsync(file) == 0);
    ::close(file);
}

bool saveByCopy(const std::string& path, bool synced) {
    const std::string beside = path + ".tmp";
    const int from = ::open(path.c_str(), O_RDONLY);
    const int to = ::open(beside.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    struct stat state {};
    ::fstat(from, &state);
    for (off_t left = state.st_size; left > 0;) {
        const ssize_t count =
            ::copy_file_range(from, nullptr, to, nullptr, static_cast<std::size_t>(left), 0);
        finish(count > 0);
        left -= count;
    }
    finish(!synced || ::fsync(to) == 0);
    ::close(from);
    ::close(to);
    finish(std::rename(beside.c_str(), path.c_str()) == 0);
    if (synced) syncPath(path.substr(0, path.rfind('/')));
    return true;
}

void verify(const std::string& path, char round, Measure& measure, std::uint64_t& number) {
    withFile(path, [&](auto& file, auto* tag) {
        const std::string name = "file " + std::to_string(number++);
        const std::string title = tag->title().to8Bit(true);
        const std::string comment = tag->comment().to8Bit(true);
        measure.found(name + " title", title.size() + 1000 * (title.back() == round));
        measure.found(name + " comment", comment.size() + 100000 * (comment.back() == round));
        measure.found(name + " key", keyOf(*tag).to8Bit(true).back() == round);
        return file.isValid();
    });
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 4) return 2;
    std::string what = arguments[1];
    const bool synced = what.ends_with("-sync");
    if (synced) what.erase(what.find('-'));
    const char round = *arguments[2];
    std::uint64_t saved = 0;
    Measure measure;
    if (what == "verify") {
        forEachLine(arguments[3], [&](const std::string& path) { verify(path, round, measure, saved); });
        measure.print();
        return 0;
    }
    measure.start();
    for (int passes = passesOf(count, arguments, 4); passes > 0; --passes) {
        forEachLine(arguments[3], [&](const std::string& path) {
            const bool isCopied = what == "copy";
            saved += isCopied ? saveByCopy(path, synced) : saveByTagLib(path, what, letterOf(round, passes));
            if (synced && !isCopied) syncPath(path);
        });
    }
    measure.stop();
    measure.found("saved", saved);
    measure.print();
}
