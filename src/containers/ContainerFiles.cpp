#include "containers/ContainerFiles.h"

#include "base/Endian.h"
#include "containers/FLACBlocks.h"
#include "containers/MP4Atoms.h"
#include "id3/FormChunks.h"
#include "id3/ID3Guards.h"
#include "id3/ID3Frames.h"
#include "id3/TagLibBytes.h"
#include "id3/TagLibText.h"
#include "platform/Log.h"

#include <id3v2framefactory.h>
#include <xiphcomment.h>

#include <algorithm>
#include <map>
#include <utility>

namespace zal {

using TagLib::RIFF::WAV::ZALFile;

// MP4

std::unique_ptr<MP4File> mp4File(TagLibStream& stream) {
    const MP4Structure structure = structureOfMP4(stream);
    if (structure == MP4Structure::refused) return nullptr;
    auto file = std::make_unique<MP4File>(&stream, false, TagLib::AudioProperties::Average);
    file->writable = structure == MP4Structure::writable;
    return file->isValid() ? std::move(file) : nullptr;
}

bool writeMP4File(MP4File& file, const std::string& path) {
    if (file.writable) return file.save();
    logf("could not save '{}': its audio would not be found again", path);
    return false;
}

// FLAC

std::unique_ptr<TagLib::FLAC::File> flacFile(TagLibStream& stream) {
    if (!canReadFLAC(stream) || !isSafeID3v2(stream, 0)) return nullptr;
    auto file = std::make_unique<TagLib::FLAC::File>(&stream, TagLib::ID3v2::FrameFactory::instance(), false,
                                                     TagLib::AudioProperties::Average);
    if (!file->isValid()) return nullptr;
    TagLib::ID3v2::Tag* tag = file->ID3v2Tag(false);
    return tag == nullptr || prepareFrames(*tag) ? std::move(file) : nullptr;
}

bool writeFLACFile(TagLib::FLAC::File& file, const std::string& path) {
    const TagLib::ID3v2::Tag* tag = file.ID3v2Tag(false);
    if (tag != nullptr && !fitsItsLength(*tag, path)) return false;
    // As a save fills a comment that the file did not have.
    if (!file.hasXiphComment()) TagLib::Tag::duplicate(file.tag(), file.xiphComment(true), false);
    // TagLib would write the lengths without their upper bits.
    auto largest = file.xiphComment(true)->render(false).size();
    for (const TagLib::FLAC::Picture* picture : file.pictureList()) {
        largest = std::max(largest, picture->render().size());
    }
    if (largest <= flacBlockMax) return file.save();
    logf("could not save '{}': a metadata block of {} bytes is too large", path, largest);
    return false;
}

// WAV

namespace {

// The fields of an INFO list: the bytes before the first NUL, by id; the last of an id counts.
std::map<std::string, std::string> infoFields(const TagLib::ByteVector& list) {
    std::map<std::string, std::string> fields;
    ByteReader in(viewOf(list));
    in.skip(4);
    while (in.remaining() >= 8) {
        const ZALDataView id = in.take(4);
        const std::uint32_t size = in.u32le();
        const ZALDataView text = in.take(size);
        if (in.failed()) break;
        if (in.remaining() > 0) in.skip(size % 2);
        fields[{id.begin(), id.end()}].assign(text.begin(), std::find(text.begin(), text.end(), 0));
    }
    return fields;
}

void restoreInfoTexts(ZALFile& file) {
    const TagLib::ByteVector list = file.infoTagChunk();
    for (const auto& [id, text] : infoFields(list)) {
        const TagLib::ByteVector key(id.data(), static_cast<unsigned int>(id.size()));
        TagLib::RIFF::Info::Tag& info = *file.InfoTag();
        if (!text.empty() && info.fieldText(key).isEmpty()) info.setFieldText(key, latin1TagLibString(text));
    }
}

}  // namespace

std::unique_ptr<ZALFile> wavFile(TagLibStream& stream) {
    stream.seek(0);
    const TagLib::ByteVector head = stream.readBlock(12);
    if (!head.startsWith("RIFF") || head.mid(8) != "WAVE") return nullptr;
    if (!canReadForm(stream, FormKind::riff)) return nullptr;
    stream.seek(0);  // TagLib walks the chunks from where the stream stands
    auto file = std::make_unique<ZALFile>(&stream, false, TagLib::AudioProperties::Average);
    if (!file->isValid()) return nullptr;
    if (file->tag() != nullptr && !prepareFrames(*file->tag())) return nullptr;
    restoreInfoTexts(*file);
    return file;
}

}  // namespace zal
