#include <zaltag/id3/ZALTagAIFF.h>

#include "id3/FormFile.h"
#include "id3/ID3State.h"
#include "id3/TagFile.h"
#include "tag/ZALTagBackEnds.h"

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
    if (s.stream == nullptr) return false;
    aifffile_ = zal::FormFile::openAIFF(*s.stream);
    if (aifffile_ == nullptr) return false;
    s.setV2TagsOf(*aifffile_);
    return true;
}

bool ZALTagAIFF::readOnly() const {
    return aifffile_ != nullptr && state().stream->readOnly();
}

bool ZALTagAIFF::save(ZALError* error) {
    if (!ZALTagID3::save(error)) return false;
    if (aifffile_ == nullptr) return failSave(error);
    return zal::saveFile(path(), *state().stream, *aifffile_) || failSave(error);
}
