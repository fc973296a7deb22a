#include <zaltag/id3/ZALTagID3.h>

#include "files/TagFile.h"
#include "files/TagFilling.h"
#include "id3/ID3State.h"
#include "stores/ID3Frames.h"
#include "tag/ZALTagBackEnds.h"

#include <zaltag/records/ZALTagRecordData.h>

ZALTagID3::ZALTagID3() : state_(std::make_unique<State>()) {}
ZALTagID3::~ZALTagID3() = default;

// Opening

const ZALArray<std::string>& ZALTagID3::supportedFileTypes() {
    static const ZALArray<std::string> types{"mp3"};
    return types;
}

bool ZALTagID3::canInitWithPath(const ZALNullableString& path) {
    return zal::hasExtensionAmong(path, supportedFileTypes());
}

std::shared_ptr<ZALTagID3> ZALTagID3::tagAtPath(const ZALNullableString& path, bool readOnly,
                                                ZALError* error) {
    return canInitWithPath(path) ? initWithPath(path, readOnly, error) : nullptr;
}

std::shared_ptr<ZALTag> ZALTagID3::initWithPath(const ZALNullableString& path) {
    return initReceiver("ZALTagID3", path);
}

std::shared_ptr<ZALTagID3> ZALTagID3::initWithPath(const ZALNullableString& path, bool readOnly,
                                                   ZALError* error) {
    const auto open = [readOnly](const std::string& file, zal::Failure& failure) {
        const std::shared_ptr<ZALTagID3> tag(new ZALTagID3);
        return tag->openMP3(file, readOnly, failure) ? tag : nullptr;
    };
    return zal::openTag("-[ZALTagID3 initWithPath:readOnly:]", path, canInitWithPath(path), error, open);
}

bool ZALTagID3::openMP3(const std::string& path, bool readOnly, zal::Failure& failure) {
    State& s = state();
    s.stream = zal::TagLibStream::open(path, readOnly, &failure);
    if (s.stream == nullptr) return false;
    s.file = zal::MP3File::open(*s.stream);
    if (s.file == nullptr) return false;
    auto contents = std::make_unique<zal::TagContents>();
    s.addV2(*contents, *s.file);
    if (s.file->v1() != nullptr && !s.file->v1()->tag().isEmpty()) s.addV1(*contents, s.file->v1()->tag());
    s.addPictures(*contents, zal::id3Artwork);
    setContents(std::move(contents));
    return true;
}

bool ZALTagID3::readOnly() const {
    return state().stream != nullptr && state().stream->readOnly();
}
std::optional<ZALFirstFrame> ZALTagID3::firstFrame() const {
    return state().file != nullptr ? state().file->firstFrame() : std::nullopt;
}
bool ZALTagID3::hasID3v1Tag() const {
    return state().v1Tag != nullptr;
}
bool ZALTagID3::hasID3v2Tag() const {
    return state().v2 != nullptr;
}
bool ZALTagID3::requiresSaving() const {
    return state().fields != nullptr && state().fields->requiresSaving();
}
TagLib::ID3v2::Tag* ZALTagID3::v2Tag() const {
    return state_->v2 != nullptr ? &state_->v2->tagToEdit() : nullptr;
}

bool ZALTagID3::save(ZALError* error) {
    if (!ZALTag::save(error)) return false;
    if (state().file == nullptr) return true;  // the other containers save themselves after this call
    State& s = state();
    const auto fill = [&s] { return s.v1Tag != nullptr && zal::fillFromID3v1(*s.file); };
    const auto failure = zal::saveFile(*s.stream, *s.file, shouldStripID3v1Tag(), fill);
    if (failure) return failSave(error, failure);
    s.fields->setIsSaved();
    return true;
}

// The two frames of the grouping

ZALNullableString ZALTagID3::TIT1Grouping() const {
    const auto* tag = state().v2TagWith(zal::contentGroupID);
    return tag != nullptr ? zal::textOfFirstFrame(*tag, zal::contentGroupID) : std::nullopt;
}
void ZALTagID3::setTIT1Grouping(const ZALNullableString& grouping) {
    if (state().v2 != nullptr) zal::setOrRemoveFirstFrame(*state().v2, zal::contentGroupID, grouping);
}

ZALNullableString ZALTagID3::GRP1Grouping() const {
    const auto* tag = state().v2TagWith(zal::groupingID);
    return tag != nullptr ? zal::textOfGRP1(*tag) : std::nullopt;
}
void ZALTagID3::setGRP1Grouping(const ZALNullableString& grouping) {
    if (state().v2 != nullptr) zal::setTextOfGRP1(*state().v2, grouping);
}

// Properties by key: the two groupings beside those of every tag

ZALArray<std::string> ZALTagID3::propertyKeys() const {
    std::vector<std::string> keys = ZALTag::propertyKeys().elements();
    keys.insert(keys.end(), {"TIT1Grouping", "GRP1Grouping"});
    return keys;
}

ZALJSONValue ZALTagID3::valueForKey(const std::string& key) const {
    if (key == "TIT1Grouping") return TIT1Grouping();
    if (key == "GRP1Grouping") return GRP1Grouping();
    return ZALTag::valueForKey(key);
}

void ZALTagID3::setValue(const ZALJSONValue& value, const std::string& key) {
    if (key == "TIT1Grouping") {
        setTIT1Grouping(value.stringValue());
    } else if (key == "GRP1Grouping") {
        setGRP1Grouping(value.stringValue());
    } else {
        ZALTag::setValue(value, key);
    }
}

// Records by any name

std::optional<ZALJSONValue> ZALTagID3::storedDictionary(const std::string& description) const {
    for (const TagLib::ID3v2::Tag* tag : state().v2Tags) {
        const ZALNullableData stored = zal::objectOf(*tag, description);
        if (stored && !description.empty()) return ZALTagRecordDictionary(*stored);
    }
    return std::nullopt;
}

void ZALTagID3::setZalTagPropertyDescription(const ZALTagCustomProperty* record,
                                             const std::string& description) {
    if (state().v2 == nullptr || description.empty()) return;
    zal::setRecord(*state().fields, {description.c_str(), nullptr, nullptr}, record);
}

// Traktor

// Who gets the frame may change it.
TagLib::ID3v2::PrivateFrame* ZALTagID3::findTraktorPrivateFrame() const {
    if (state_->v2 != nullptr) state_->v2->tagToEdit("PRIV");
    for (const TagLib::ID3v2::Tag* tag : state().v2Tags) {
        const auto frames = zal::traktorFrames(*tag);
        if (!frames.empty()) return frames.front();
    }
    return nullptr;
}

void ZALTagID3::setTraktorCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints) {
    if (zal::ID3v2Store* v2 = state().v2) {
        for (TagLib::ID3v2::PrivateFrame* frame : zal::traktorFrames(v2->tag())) {
            v2->tagToEdit("PRIV").removeFrame(frame);
        }
    }
    ZALTag::setTraktorCuePoints(cuePoints);
}
