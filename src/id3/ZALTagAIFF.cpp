#include <zaltag/id3/ZALTagAIFF.h>

#include "files/FormFile.h"
#include "files/TagFile.h"
#include "id3/ID3State.h"
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

std::shared_ptr<ZALTagAIFF> ZALTagAIFF::tagAtPath(const ZALNullableString& path, bool readOnly,
                                                  ZALError* error) {
    return canInitWithPath(path) ? initWithPath(path, readOnly, error) : nullptr;
}

std::shared_ptr<ZALTag> ZALTagAIFF::initWithPath(const ZALNullableString& path) {
    return initReceiver("ZALTagAIFF", path);
}

std::shared_ptr<ZALTagAIFF> ZALTagAIFF::initWithPath(const ZALNullableString& path, bool readOnly,
                                                     ZALError* error) {
    const auto open = [readOnly](const std::string& file, zal::Failure& failure) {
        const std::shared_ptr<ZALTagAIFF> tag(new ZALTagAIFF);
        return tag->openAIFF(file, readOnly, failure) ? tag : nullptr;
    };
    return zal::openTag("-[ZALTagAIFF initWithPath:readOnly:]", path, canInitWithPath(path), error, open);
}

bool ZALTagAIFF::openAIFF(const std::string& path, bool readOnly, zal::Failure& failure) {
    State& s = state();
    s.stream = zal::TagLibStream::open(path, readOnly, &failure);
    if (s.stream == nullptr) return false;
    aifffile_ = zal::FormFile::openAIFF(*s.stream);
    if (aifffile_ == nullptr) return false;
    auto contents = std::make_unique<zal::TagContents>();
    s.addV2(*contents, *aifffile_);
    s.addPictures(*contents, zal::id3Artwork);
    setContents(std::move(contents));
    return true;
}

bool ZALTagAIFF::save(ZALError* error) {
    if (!ZALTagID3::save(error)) return false;
    if (aifffile_ == nullptr) return failSave(error, "it is not open");
    const auto failure = zal::saveFile(*state().stream, *aifffile_);
    return !failure || failSave(error, failure);
}
