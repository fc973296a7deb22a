#include "id3/ID3Files.h"

#include "id3/FormChunks.h"
#include "id3/ID3Frames.h"
#include "id3/ID3Guards.h"
#include "id3/MPEGFrames.h"
#include "platform/Log.h"

#include <id3v2framefactory.h>
#include <id3v2tag.h>

#include <utility>

namespace zal {

namespace {

// TagLib calls every file valid; one without any tag and without audio is no MP3.
bool isMP3(const TagLib::MPEG::File& file, TagLibStream& stream) {
    return file.hasID3v2Tag() || file.hasID3v1Tag() || file.hasAPETag() || holdsMPEGFrame(stream);
}

// TagLib calls every file valid; the first twelve bytes tell an AIFF form.
bool beginsAsAIFF(TagLibStream& stream) {
    stream.seek(0);
    const TagLib::ByteVector start = stream.readBlock(12);
    const TagLib::ByteVector type = start.mid(8);
    return start.startsWith("FORM") && (type == "AIFF" || type == "AIFC");
}

}  // namespace

std::unique_ptr<TagLib::MPEG::File> mpegFile(TagLibStream& stream) {
    const auto position = positionOfID3v2(stream);
    if ((position && !isSafeID3v2(stream, *position)) || !isSafeAPE(stream)) return nullptr;
    auto file = std::make_unique<TagLib::MPEG::File>(&stream, TagLib::ID3v2::FrameFactory::instance(), false,
                                                     TagLib::AudioProperties::Average);
    if (!file->isValid() || !isMP3(*file, stream)) return nullptr;
    return prepareFrames(*file->ID3v2Tag(true)) ? std::move(file) : nullptr;
}

bool writeMP3File(TagLib::MPEG::File& file, TagLibStream& stream, const std::string& path, int tags,
                  TagLib::File::StripTags strip, TagLib::File::DuplicateTags duplicate) {
    const bool writesID3v2 = (tags & TagLib::MPEG::File::ID3v2) != 0;
    if (writesID3v2 && !fitsItsLength(*file.ID3v2Tag(true), path)) return false;
    const bool rewritesAPE = (tags & TagLib::MPEG::File::APE) != 0 || strip == TagLib::File::StripOthers;
    const std::string reason = whyNotWritableMP3(stream, rewritesAPE);
    if (reason.empty()) return file.save(tags, strip, TagLib::ID3v2::v4, duplicate);
    logf("could not save '{}': {}", path, reason);
    return false;
}

std::unique_ptr<TagLib::RIFF::AIFF::File> aiffFile(TagLibStream& stream) {
    if (!beginsAsAIFF(stream) || !canReadForm(stream, FormKind::form)) return nullptr;
    stream.seek(0);  // TagLib walks the chunks from where the stream stands
    auto file = std::make_unique<TagLib::RIFF::AIFF::File>(&stream, false, TagLib::AudioProperties::Average);
    if (!file->isValid()) return nullptr;
    const bool hasFew = file->tag() == nullptr || prepareFrames(*file->tag());
    return hasFew ? std::move(file) : nullptr;
}

}  // namespace zal
