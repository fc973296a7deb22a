// The copies between files of the ID3 family: MP3, AIFF, WAV and FLAC.

#include <zaltag/tools/ZALCopyTag.h>
#include <zaltag/tools/ZALTagDescription.h>

#include "files/FLACFile.h"
#include "files/FormFile.h"
#include "files/MP3File.h"
#include "tools/CopyFiles.h"
#include "tools/FrameTransfer.h"

namespace {

using zal::FLACFile;
using zal::FormFile;
using zal::MP3File;

template <typename File>
bool holdsID3v1(const zal::CopiedFile<File>& file) {
    return file->v1() != nullptr && !file->v1()->tag().isEmpty();
}

template <typename File>
bool holdsID3v2(const zal::CopiedFile<File>& file) {
    return !file->rawV2().frames.empty();
}

// The fields of the source's ID3v1 tag into that of the destination, which is made where there is none.
template <typename File>
void copyID3v1(const zal::Copy<File, File>& files) {
    TagLib::Tag::duplicate(&files.source->v1()->tag(), &files.destination->makeV1().tag(), true);
}

// The frames of the source's ID3v2 tag behind those of the destination.
template <typename File>
void copyID3v2(const zal::Copy<File, File>& files) {
    const int encrypted = zal::transferFrames(files.source->rawV2(), files.destination->v2());
    if (encrypted == 0) return;
    zal::logf("{}: {} encrypted frames were not copied from '{}'", files.function, encrypted,
              files.source.path);
}

bool copyMP3(zal::Copy<MP3File, MP3File>& files) {
    const bool hasV1 = holdsID3v1(files.source);
    const bool hasV2 = holdsID3v2(files.source);
    if (!hasV1 && !hasV2) return true;
    if (hasV1) copyID3v1(files);
    if (hasV2) {
        ZALPrintV2Tag(&files.source->v2().tag());
        copyID3v2(files);
    }
    return zal::saveDestination(files.destination, MP3File::open);
}

bool copyAIFF(zal::Copy<FormFile, FormFile>& files) {
    if (!holdsID3v2(files.source)) return true;
    copyID3v2(files);
    return zal::saveDestination(files.destination, FormFile::openAIFF);
}

bool copyWAV(zal::Copy<FormFile, FormFile>& files) {
    const TagLib::ByteVector list = files.source->firstList();
    if (!holdsID3v2(files.source) && list.isEmpty()) return true;
    copyID3v2(files);
    if (!list.isEmpty()) files.destination->setList(list);
    return zal::saveDestination(files.destination, FormFile::openWAV);
}

bool copyFLAC(zal::Copy<FLACFile, FLACFile>& files) {
    const bool hasV1 = holdsID3v1(files.source);
    const bool hasV2 = holdsID3v2(files.source);
    const bool hasComment = !files.source->comment().isEmpty();
    if (!hasV1 && !hasV2 && !hasComment) return true;
    if (hasComment) files.destination->replaceFields(*files.source.file);
    if (hasV1) copyID3v1(files);
    if (hasV2) copyID3v2(files);
    return zal::saveDestination(files.destination, FLACFile::open);
}

}  // namespace

bool ZALCopyTagID3(const ZALNullableString& source, const ZALNullableString& destination) {
    return zal::copyTags("BOOL ZALCopyTagID3(NSString *__strong, NSString *__strong)", source, MP3File::open,
                         destination, MP3File::open, copyMP3);
}

bool ZALCopyTagAIFF(const ZALNullableString& source, const ZALNullableString& destination) {
    return zal::copyTags("BOOL ZALCopyTagAIFF(NSString *__strong, NSString *__strong)", source,
                         FormFile::openAIFF, destination, FormFile::openAIFF, copyAIFF);
}

bool ZALCopyTagWAV(const ZALNullableString& source, const ZALNullableString& destination) {
    return zal::copyTags("BOOL ZALCopyTagWAV(NSString *__strong, NSString *__strong)", source,
                         FormFile::openWAV, destination, FormFile::openWAV, copyWAV);
}

bool ZALCopyTagFLAC(const ZALNullableString& source, const ZALNullableString& destination) {
    return zal::copyTags("BOOL ZALCopyTagFLAC(NSString *__strong, NSString *__strong)", source,
                         FLACFile::open, destination, FLACFile::open, copyFLAC);
}
