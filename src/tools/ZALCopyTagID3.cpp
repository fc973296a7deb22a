// The copies between files of the ID3 family: MP3, AIFF, WAV and FLAC.

#include <zaltag/tools/ZALCopyTag.h>
#include <zaltag/tools/ZALTagDescription.h>

#include "containers/ContainerFiles.h"
#include "id3/FormChunks.h"
#include "id3/ID3Files.h"
#include "id3/TagLibText.h"
#include "tools/CopyFiles.h"
#include "tools/FrameTransfer.h"

#include <id3v1tag.h>
#include <tpropertymap.h>
#include <xiphcomment.h>

namespace {

using AIFFFile = TagLib::RIFF::AIFF::File;
using FLACFile = TagLib::FLAC::File;
using MP3File = TagLib::MPEG::File;
using WAVFile = TagLib::RIFF::WAV::ZALFile;

bool holdsSomething(const TagLib::Tag* tag) {
    return tag != nullptr && !tag->isEmpty();
}

// The fields of the source's ID3v1 tag into that of the destination, which is made where there is none. Both
// MP3 and FLAC files have one.
template <typename ID3File>
void copyID3v1(const zal::Copy<ID3File, ID3File>& files) {
    TagLib::ID3v1::Tag* destination = files.destination->ID3v1Tag(true);
    if (destination != nullptr) return TagLib::Tag::duplicate(files.source->ID3v1Tag(), destination, true);
    zal::logf("{}: no destination ID3v1 tag could could not be created '{}'", files.function,
              files.destination.path);
}

template <typename File>
void copyFrames(const zal::Copy<File, File>& files, TagLib::ID3v2::Tag& from, TagLib::ID3v2::Tag& to) {
    const int encrypted = zal::transferFrames(from, to);
    if (encrypted == 0) return;
    zal::logf("{}: {} encrypted frames were not copied from '{}'", files.function, encrypted,
              files.source.path);
}

// The ID3v2 frames, as the fields of ID3v1.
template <typename ID3File>
void copyID3v2(const zal::Copy<ID3File, ID3File>& files) {
    TagLib::ID3v2::Tag* destination = zal::destinationID3v2Tag(files);
    if (destination != nullptr) copyFrames(files, *files.source->ID3v2Tag(), *destination);
}

// MP3

bool copyMP3(zal::Copy<MP3File, MP3File>& files) {
    const bool hasV1 = holdsSomething(files.source->ID3v1Tag());
    const bool hasV2 = holdsSomething(files.source->ID3v2Tag());
    if (!hasV1 && !hasV2) return true;
    if (hasV1) copyID3v1(files);
    if (hasV2) {
        dprintV2Tag(files.source->ID3v2Tag());
        copyID3v2(files);
    }
    const int kinds = (hasV1 ? MP3File::ID3v1 : 0) | (hasV2 ? MP3File::ID3v2 : 0);
    return zal::saveDestination(files.destination, zal::mpegFile, [&] {
        return zal::writeMP3File(*files.destination.file, *files.destination.stream, files.destination.path,
                                 kinds, MP3File::StripOthers, MP3File::DoNotDuplicate);
    });
}

// AIFF and WAV

template <typename File, typename Write>
bool saveFormDestination(const zal::CopiedFile<File>& destination, zal::FormKind kind, zal::FormLists lists,
                         zal::Opening<File> open, Write write) {
    const auto save = [&] { return zal::writeDestination(destination, open, write); };
    return zal::saveForm(destination.path, *destination.stream, kind, save, lists) == zal::FormSave::done;
}

bool copyAIFF(zal::Copy<AIFFFile, AIFFFile>& files) {
    TagLib::ID3v2::Tag* source = files.source->tag();
    if (source == nullptr) {
        zal::logf("{}: no AIFF/ID3 tag found in '{}'", files.function, files.source.path);
        return false;
    }
    if (source->isEmpty()) return true;
    copyFrames(files, *source, *files.destination->tag());
    return saveFormDestination(files.destination, zal::FormKind::form, zal::FormLists::kept, zal::aiffFile,
                               [&] { return files.destination->save(); });
}

bool copyWAV(zal::Copy<WAVFile, WAVFile>& files) {
    const TagLib::ByteVector list = files.source->infoChunk();
    if (files.source->ID3v2Tag()->isEmpty() && list.isEmpty()) return true;
    copyFrames(files, *files.source->ID3v2Tag(), *files.destination->ID3v2Tag());
    const auto write = [&] {
        const bool saved = files.destination->save(WAVFile::ID3v2, WAVFile::StripOthers, TagLib::ID3v2::v4);
        // Afterwards: TagLib's save takes an INFO list away that is not its own.
        if (saved && !list.isEmpty()) files.destination->setInfoChunk(list);
        return saved;
    };
    return saveFormDestination(files.destination, zal::FormKind::riff, zal::FormLists::replaced, zal::wavFile,
                               write);
}

// FLAC

void copyFields(const TagLib::Ogg::XiphComment& source, TagLib::Ogg::XiphComment& destination) {
    for (const auto& [name, values] : destination.setProperties(source.properties())) {
        zal::logf("Xiph key '{}' was not copied", zal::stringWithTagLibString(name));
    }
}

// TagLib fills a comment that it makes with the fields of the ID3 tags; the source's own fields are put in
// again, and what is left of TagLib's goes.
bool writeFLAC(const zal::Copy<FLACFile, FLACFile>& files) {
    const bool hadComment = files.destination->hasXiphComment();
    const zal::CopiedFile<FLACFile>& destination = files.destination;
    if (!zal::writeFLACFile(*destination.file, destination.path)) return false;
    if (hadComment) return true;
    const TagLib::Ogg::XiphComment* comment = files.source->xiphComment();
    destination->xiphComment()->setProperties(comment != nullptr ? comment->properties()
                                                                 : TagLib::PropertyMap());
    return zal::writeFLACFile(*destination.file, destination.path);
}

bool copyFLAC(zal::Copy<FLACFile, FLACFile>& files) {
    const bool hasV1 = holdsSomething(files.source->ID3v1Tag());
    const bool hasV2 = holdsSomething(files.source->ID3v2Tag());
    const bool hasComment = holdsSomething(files.source->xiphComment());
    if (!hasV1 && !hasV2 && !hasComment) return true;
    if (hasComment) {
        TagLib::Ogg::XiphComment* comment = files.destination->xiphComment(true);
        if (comment == nullptr) {
            zal::logf("{}: no XIPH comment created in '{}'", files.function, files.destination.path);
            return false;
        }
        copyFields(*files.source->xiphComment(), *comment);
    }
    if (hasV1) copyID3v1(files);
    if (hasV2) copyID3v2(files);
    return zal::saveDestination(files.destination, zal::flacFile, [&] { return writeFLAC(files); });
}

}  // namespace

bool ZALCopyTagID3(const ZALNullableString& source, const ZALNullableString& destination) {
    return zal::copyTags("BOOL ZALCopyTagID3(NSString *__strong, NSString *__strong)", source, zal::mpegFile,
                         destination, zal::mpegFile, copyMP3);
}

bool ZALCopyTagAIFF(const ZALNullableString& source, const ZALNullableString& destination) {
    return zal::copyTags("BOOL ZALCopyTagAIFF(NSString *__strong, NSString *__strong)", source, zal::aiffFile,
                         destination, zal::aiffFile, copyAIFF);
}

bool ZALCopyTagWAV(const ZALNullableString& source, const ZALNullableString& destination) {
    return zal::copyTags("BOOL ZALCopyTagWAV(NSString *__strong, NSString *__strong)", source, zal::wavFile,
                         destination, zal::wavFile, copyWAV);
}

bool ZALCopyTagFLAC(const ZALNullableString& source, const ZALNullableString& destination) {
    return zal::copyTags("BOOL ZALCopyTagFLAC(NSString *__strong, NSString *__strong)", source, zal::flacFile,
                         destination, zal::flacFile, copyFLAC);
}
