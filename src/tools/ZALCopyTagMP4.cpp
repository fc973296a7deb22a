// The copies from MP4 files.

#include <zaltag/tools/ZALCopyTag.h>
#include <zaltag/tools/ZALTagDescription.h>

#include "files/MP3File.h"
#include "files/MP4File.h"
#include "stores/ID3Frames.h"
#include "tools/CopyFiles.h"

#include <attachedpictureframe.h>
#include <commentsframe.h>
#include <mp4coverart.h>
#include <mp4tag.h>

#include <string>

namespace {

using zal::MP3File;
using zal::MP4File;

// Volumes and the length of silence measured on the old audio.
bool belongsToAudio(const TagLib::String& item) {
    return item == "----:com.apple.iTunes:iTunNORM" || item == "----:com.apple.iTunes:iTunSMPB";
}

zal::Failure copyMP4(zal::Copy<MP4File, MP4File>& files) {
    ZALPrintMP4Tag(&files.source->tag());
    if (files.source->tag().isEmpty()) return {};
    files.destination->items().replaceBy(files.source->items(), belongsToAudio);
    ZALPrintMP4Tag(&files.destination->tag());
    return zal::saveDestination(files.destination, MP4File::open);
}

// MP4 to MP3

void setCommentLanguage(TagLib::ID3v2::Tag& tag) {
    auto* comment = dynamic_cast<TagLib::ID3v2::CommentsFrame*>(zal::firstFrame(tag, "COMM"));
    if (comment != nullptr) comment->setLanguage("eng");
}

void copyNumbers(const TagLib::MP4::Tag& source, zal::ID3v2Store& store) {
    if (source.contains("trkn")) {
        const auto [number, total] = source.item("trkn").toIntPair();
        zal::setTextOfFirstFrame(store, "TRCK", fmt::format("{}/{}", number, total));
    }
    const int tempo = source.contains("tmpo") ? source.item("tmpo").toInt() : 0;
    if (tempo > 0) zal::setTextOfFirstFrame(store, "TBPM", std::to_string(tempo));
    if (source.contains("cpil") && source.item("cpil").toBool()) zal::setTextOfFirstFrame(store, "TCMP", "1");
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

zal::Failure copyToMP3(zal::Copy<MP4File, MP3File>& files) {
    const TagLib::MP4::Tag& source = files.source->tag();
    ZALPrintMP4Tag(&source);
    if (source.isEmpty()) return {};
    zal::ID3v2Store& store = files.destination->v2();
    TagLib::ID3v2::Tag& tag = store.tagToEdit();
    TagLib::Tag::duplicate(&source, &tag, true);
    setCommentLanguage(tag);
    copyNumbers(source, store);
    addCovers(source, tag);
    if (zal::ID3v1Store* v1 = files.destination->v1()) TagLib::Tag::duplicate(&source, &v1->tag(), true);
    return zal::saveDestination(files.destination, MP3File::open);
}

}  // namespace

bool ZALCopyTagMP4(const ZALNullableString& source, const ZALNullableString& destination, ZALError* error) {
    return zal::copyTags("BOOL ZALCopyTagMP4(NSString *__strong, NSString *__strong)", source, MP4File::open,
                         destination, MP4File::open, copyMP4, error);
}

bool ZALCopyTagMP42ID3(const ZALNullableString& source, const ZALNullableString& destination,
                       ZALError* error) {
    return zal::copyTags("BOOL ZALCopyTagMP42ID3(NSString *__strong, NSString *__strong)", source,
                         MP4File::open, destination, MP3File::open, copyToMP3, error);
}
