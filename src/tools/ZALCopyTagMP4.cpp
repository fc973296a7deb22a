// The copies from MP4 files.

#include <zaltag/tools/ZALCopyTag.h>
#include <zaltag/tools/ZALTagDescription.h>

#include "containers/ContainerFiles.h"
#include "id3/ID3Files.h"
#include "id3/ID3Frames.h"
#include "tools/CopyFiles.h"
#include "tools/FrameTransfer.h"

#include <attachedpictureframe.h>
#include <commentsframe.h>
#include <mp4coverart.h>
#include <mp4tag.h>

#include <string>

namespace {

using MP3File = TagLib::MPEG::File;
using zal::MP4File;

// The source's tag; null, with a log line, when it has none.
template <typename Destination>
const TagLib::MP4::Tag* sourceTag(const zal::Copy<MP4File, Destination>& files) {
    const TagLib::MP4::Tag* tag = files.source->tag();
    if (tag == nullptr) zal::logf("{}: no m4a tag found in '{}'", files.function, files.source.path);
    dprintMP4Tag(tag);
    return tag;
}

// MP4

// Volumes and the length of silence measured on the old audio.
bool belongsToAudio(const TagLib::String& item) {
    return item == "----:com.apple.iTunes:iTunNORM" || item == "----:com.apple.iTunes:iTunSMPB";
}

void replaceItems(TagLib::MP4::Tag& tag, const TagLib::MP4::ItemMap& items) {
    const TagLib::MP4::ItemMap old = tag.itemMap();
    for (const auto& [name, item] : old) {
        tag.removeItem(name);
    }
    for (const auto& [name, item] : items) {
        if (!belongsToAudio(name)) tag.setItem(name, item);
    }
}

bool copyMP4(zal::Copy<MP4File, MP4File>& files) {
    const TagLib::MP4::Tag* source = sourceTag(files);
    TagLib::MP4::Tag* destination = files.destination->tag();
    if (source == nullptr) return false;
    if (destination == nullptr) {
        zal::logf("{}: no m4a tag found in '{}'", files.function, files.destination.path);
        return false;
    }
    if (source->isEmpty()) return true;
    replaceItems(*destination, source->itemMap());
    dprintMP4Tag(destination);
    return zal::saveDestination(files.destination, zal::mp4File, [&] {
        return zal::writeMP4File(*files.destination.file, files.destination.path);
    });
}

// MP4 to MP3

void setCommentLanguage(TagLib::ID3v2::Tag& tag) {
    auto* comment = dynamic_cast<TagLib::ID3v2::CommentsFrame*>(zal::firstFrame(tag, "COMM"));
    if (comment != nullptr) comment->setLanguage("eng");
}

void copyNumbers(const TagLib::MP4::Tag& source, TagLib::ID3v2::Tag& tag) {
    if (source.contains("trkn")) {
        const auto [number, total] = source.item("trkn").toIntPair();
        zal::setTextOfFirstFrame(tag, "TRCK", fmt::format("{}/{}", number, total));
    }
    // TagLib reads one above 32767 as negative.
    const int tempo = source.contains("tmpo") ? source.item("tmpo").toInt() : 0;
    if (tempo > 0) zal::setTextOfFirstFrame(tag, "TBPM", std::to_string(tempo));
    if (source.contains("cpil") && source.item("cpil").toBool()) zal::setTextOfFirstFrame(tag, "TCMP", "1");
}

void addCovers(const TagLib::MP4::Tag& source, TagLib::ID3v2::Tag& tag) {
    if (!source.contains("covr")) return;
    for (const TagLib::MP4::CoverArt& cover : source.item("covr").toCoverArtList()) {
        auto* frame = new TagLib::ID3v2::AttachedPictureFrame;
        frame->setPicture(cover.data());
        frame->setMimeType(cover.format() == TagLib::MP4::CoverArt::JPEG ? "image/jpeg" : "image/png");
        tag.addFrame(frame);
    }
}

bool copyToMP3(zal::Copy<MP4File, MP3File>& files) {
    const TagLib::MP4::Tag* source = sourceTag(files);
    if (source == nullptr) return false;
    if (source->isEmpty()) return true;
    TagLib::ID3v2::Tag* tag = zal::destinationID3v2Tag(files);
    if (tag != nullptr) {
        TagLib::Tag::duplicate(source, tag, true);
        setCommentLanguage(*tag);
        copyNumbers(*source, *tag);
        addCovers(*source, *tag);
    }
    return zal::saveDestination(files.destination, zal::mpegFile, [&] {
        // Without duplicating: an old ID3v1 tag would fill the fields that the source has not.
        return zal::writeMP3File(*files.destination.file, *files.destination.stream, files.destination.path,
                                 MP3File::AllTags, MP3File::StripNone, MP3File::DoNotDuplicate);
    });
}

}  // namespace

bool ZALCopyTagMP4(const ZALNullableString& source, const ZALNullableString& destination) {
    return zal::copyTags("BOOL ZALCopyTagMP4(NSString *__strong, NSString *__strong)", source, zal::mp4File,
                         destination, zal::mp4File, copyMP4);
}

bool ZALCopyTagMP42ID3(const ZALNullableString& source, const ZALNullableString& destination) {
    return zal::copyTags("BOOL ZALCopyTagMP42ID3(NSString *__strong, NSString *__strong)", source,
                         zal::mp4File, destination, zal::mpegFile, copyToMP3);
}
