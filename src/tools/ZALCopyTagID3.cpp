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

zal::Failure copyMP3(zal::Copy<MP3File, MP3File>& files) {
    const bool hasV1 = holdsID3v1(files.source);
    const bool hasV2 = holdsID3v2(files.source);
    if (!hasV1 && !hasV2) return {};
    if (hasV1) copyID3v1(files);
    if (hasV2) {
        ZALPrintV2Tag(&files.source->v2().tag());
        copyID3v2(files);
    }
    return zal::saveDestination(files.destination, MP3File::open);
}

zal::Failure copyAIFF(zal::Copy<FormFile, FormFile>& files) {
    if (!holdsID3v2(files.source)) return {};
    copyID3v2(files);
    return zal::saveDestination(files.destination, FormFile::openAIFF);
}

zal::Failure copyWAV(zal::Copy<FormFile, FormFile>& files) {
    const TagLib::ByteVector list = files.source->firstList();
    if (!holdsID3v2(files.source) && list.isEmpty()) return {};
    copyID3v2(files);
    if (!list.isEmpty()) files.destination->setList(list);
    return zal::saveDestination(files.destination, FormFile::openWAV);
}

zal::Failure copyFLAC(zal::Copy<FLACFile, FLACFile>& files) {
    const bool hasV1 = holdsID3v1(files.source);
    const bool hasV2 = holdsID3v2(files.source);
    const bool hasComment = !files.source->comment().isEmpty();
    if (!hasV1 && !hasV2 && !hasComment) return {};
    if (hasComment) files.destination->replaceFields(*files.source.file);
    if (hasV1) copyID3v1(files);
    if (hasV2) copyID3v2(files);
    return zal::saveDestination(files.destination, FLACFile::open);
}

}  // namespace

bool ZALCopyTagID3(const ZALNullableString& source, const ZALNullableString& destination, ZALError* error) {
    return zal::copyTags("BOOL ZALCopyTagID3(NSString *__strong, NSString *__strong)", source, MP3File::open,
                         destination, MP3File::open, copyMP3, error);
}

bool ZALCopyTagAIFF(const ZALNullableString& source, const ZALNullableString& destination, ZALError* error) {
    return zal::copyTags("BOOL ZALCopyTagAIFF(NSString *__strong, NSString *__strong)", source,
                         FormFile::openAIFF, destination, FormFile::openAIFF, copyAIFF, error);
}

bool ZALCopyTagWAV(const ZALNullableString& source, const ZALNullableString& destination, ZALError* error) {
    return zal::copyTags("BOOL ZALCopyTagWAV(NSString *__strong, NSString *__strong)", source,
                         FormFile::openWAV, destination, FormFile::openWAV, copyWAV, error);
}

bool ZALCopyTagFLAC(const ZALNullableString& source, const ZALNullableString& destination, ZALError* error) {
    return zal::copyTags("BOOL ZALCopyTagFLAC(NSString *__strong, NSString *__strong)", source,
                         FLACFile::open, destination, FLACFile::open, copyFLAC, error);
}
