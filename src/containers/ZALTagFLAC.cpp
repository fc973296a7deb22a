#include <zaltag/containers/ZALTagFLAC.h>

#include "files/FLACFile.h"
#include "files/TagFile.h"
#include "id3/ID3State.h"
#include "stores/BesideXiph.h"
#include "stores/XiphFields.h"
#include "tag/ZALTagBackEnds.h"

#include <zaltag/records/ZALTagRecordData.h>
#include <zaltag/tag/ZALTagComment.h>

ZALTagFLAC::ZALTagFLAC() = default;
ZALTagFLAC::~ZALTagFLAC() = default;

// Opening and saving

const ZALArray<std::string>& ZALTagFLAC::supportedFileTypes() {
    static const ZALArray<std::string> types{"flac"};
    return types;
}

bool ZALTagFLAC::canInitWithPath(const ZALNullableString& path) {
    return zal::hasExtensionAmong(path, supportedFileTypes());
}

std::shared_ptr<ZALTagFLAC> ZALTagFLAC::tagAtPath(const ZALNullableString& path, bool readOnly,
                                                  ZALError* error) {
    return canInitWithPath(path) ? initWithPath(path, readOnly, error) : nullptr;
}

std::shared_ptr<ZALTag> ZALTagFLAC::initWithPath(const ZALNullableString& path) {
    return initReceiver("ZALTagFLAC", path);
}

std::shared_ptr<ZALTagFLAC> ZALTagFLAC::initWithPath(const ZALNullableString& path, bool readOnly,
                                                     ZALError* error) {
    const auto open = [readOnly](const std::string& file, zal::Failure& failure) {
        const std::shared_ptr<ZALTagFLAC> tag(new ZALTagFLAC);
        return tag->openFLAC(file, readOnly, failure) ? tag : nullptr;
    };
    return zal::openTag("-[ZALTagFLAC initWithPath:readOnly:]", path, canInitWithPath(path), error, open);
}

bool ZALTagFLAC::openFLAC(const std::string& path, bool readOnly, zal::Failure& failure) {
    State& s = state();
    s.stream = zal::TagLibStream::open(path, readOnly, &failure);
    if (s.stream == nullptr) return false;
    flacfile_ = zal::FLACFile::open(*s.stream);
    if (flacfile_ == nullptr) return false;
    auto contents = std::make_unique<zal::TagContents>();
    auto fields = std::make_unique<zal::XiphFields>(flacfile_->comment());
    fields_ = fields.get();
    contents->add(std::move(fields));
    for (std::size_t i = 1; i < flacfile_->comments().size(); ++i) {
        contents->add(std::make_unique<zal::XiphFields>(flacfile_->comments()[i].comment()),
                      zal::Access::readOnly);
    }
    s.addV2(*contents, *flacfile_, [](std::unique_ptr<zal::TagStore> store) {
        return std::make_unique<zal::BesideXiph>(std::move(store));
    });
    if (flacfile_->v1() != nullptr) s.addV1(*contents, flacfile_->v1()->tag());
    addPictures(*contents);
    setContents(std::move(contents));
    return true;
}

bool ZALTagFLAC::save(ZALError* error) {
    if (!ZALTagID3::save(error)) return false;
    const auto failure = zal::saveFile(*state().stream, *flacfile_);
    return !failure || failSave(error, failure);
}

ZALArray<ZALTagComment> ZALTagFLAC::allComments() const {
    return ZALTag::allComments();
}

std::optional<ZALJSONValue> ZALTagFLAC::storedXiphDictionary(const std::string& xiphName) const {
    const zal::Carrier carrier{nullptr, nullptr, xiphName.c_str()};
    const ZALNullableData payload = fields_->payload(carrier);
    return payload ? ZALTagRecordDictionary(*payload) : std::nullopt;
}

void ZALTagFLAC::setZalTagPropertyXiphName(const ZALTagCustomProperty* record, const std::string& xiphName) {
    zal::setRecord(*fields_, {nullptr, nullptr, xiphName.c_str()}, record);
}
