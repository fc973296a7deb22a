#include <zaltag/id3/ZALTagAIFF.h>

#include "id3/FormChunks.h"
#include "id3/ID3Frames.h"
#include "id3/ID3State.h"
#include "id3/TagFile.h"
#include "tag/ZALTagBackEnds.h"

#include <aifffile.h>

struct ZALTagAIFF::AIFFFile : TagLib::RIFF::AIFF::File {
    using TagLib::RIFF::AIFF::File::File;
};

namespace {

// TagLib calls every file valid; the first twelve bytes tell an AIFF form.
bool beginsAsAIFF(TagLib::IOStream& stream) {
    stream.seek(0);
    const TagLib::ByteVector start = stream.readBlock(12);
    const TagLib::ByteVector type = start.mid(8);
    return start.startsWith("FORM") && (type == "AIFF" || type == "AIFC");
}

}  // namespace

ZALTagAIFF::ZALTagAIFF() = default;
ZALTagAIFF::~ZALTagAIFF() = default;

const ZALArray<std::string>& ZALTagAIFF::supportedFileTypes() {
    static const ZALArray<std::string> types{"aif", "aiff"};
    return types;
}

bool ZALTagAIFF::canInitWithPath(const ZALNullableString& path) {
    return zal::hasExtensionAmong(path, supportedFileTypes());
}

std::shared_ptr<ZALTagAIFF> ZALTagAIFF::tagAtPath(const ZALNullableString& path, bool readOnly) {
    return canInitWithPath(path) ? initWithPath(path, readOnly) : nullptr;
}

std::shared_ptr<ZALTag> ZALTagAIFF::initWithPath(const ZALNullableString& path) {
    return initReceiver("ZALTagAIFF", path);
}

std::shared_ptr<ZALTagAIFF> ZALTagAIFF::initWithPath(const ZALNullableString& path, bool readOnly) {
    const auto open = [readOnly](const std::string& file) {
        const std::shared_ptr<ZALTagAIFF> tag(new ZALTagAIFF);
        return tag->openAIFF(file, readOnly) ? tag : nullptr;
    };
    return zal::openTag("-[ZALTagAIFF initWithPath:readOnly:]", path, canInitWithPath(path), open);
}

bool ZALTagAIFF::openAIFF(const std::string& path, bool readOnly) {
    State& s = state();
    s.stream = zal::TagLibStream::open(path, readOnly);
    if (s.stream == nullptr || !beginsAsAIFF(*s.stream)) return false;
    if (!zal::canReadForm(*s.stream, zal::FormKind::form)) return false;
    s.stream->seek(0);  // TagLib walks the chunks from where the stream stands
    aifffile_ = std::make_unique<AIFFFile>(s.stream.get(), false, TagLib::AudioProperties::Average);
    if (!aifffile_->isValid()) return false;
    s.v2Tag = aifffile_->tag();
    if (s.v2Tag != nullptr) return zal::prepareFrames(*s.v2Tag);
    zal::logf("-[ZALTagAIFF initWithPath:readOnly:]: no AIFF/ID3 tag found in '{}'", path);
    return false;
}

bool ZALTagAIFF::readOnly() const {
    return aifffile_ != nullptr && aifffile_->readOnly();
}

bool ZALTagAIFF::save(ZALError* error) {
    if (!ZALTagID3::save(error)) return false;
    if (aifffile_ == nullptr || state().v2Tag == nullptr) return failSave(error);
    const auto saved =
        zal::saveForm(path(), *state().stream, zal::FormKind::form, [this] { return aifffile_->save(); });
    return saved == zal::FormSave::done || failSave(error);
}
