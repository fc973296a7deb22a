#include <zaltag/id3/ZALTagID3.h>

#include "base/Numbers.h"
#include "base/Unicode.h"
#include "id3/ID3Frames.h"
#include "id3/ID3State.h"
#include "id3/TagFile.h"
#include "id3/TagFilling.h"
#include "id3/TagLibText.h"
#include "tag/ZALTagBackEnds.h"

#include <textidentificationframe.h>
#include <tpropertymap.h>

#include <algorithm>

namespace {

using TagLib::ID3v2::TextIdentificationFrame;
using TagLib::ID3v2::UserTextIdentificationFrame;

constexpr char energyDescription[] = "EnergyLevel";

// A basic field: from the first ID3v2 tag that has it, or from the ID3v1 tag. Null when none holds it.
ZALNullableString basicField(const std::vector<const TagLib::ID3v2::Tag*>& v2Tags,
                             const TagLib::ID3v1::Tag* v1, const char* frameID,
                             TagLib::String (TagLib::Tag::*field)() const) {
    std::vector<const TagLib::Tag*> tags(v2Tags.begin(), v2Tags.end());
    if (v1 != nullptr) tags.push_back(v1);
    for (const TagLib::Tag* tag : tags) {
        const TagLib::String text = (tag->*field)();
        if (!text.isEmpty()) return zal::stringWithTagLibString(text);
    }
    const bool isPresent = std::ranges::any_of(
        v2Tags, [frameID](const TagLib::ID3v2::Tag* tag) { return !tag->frameList(frameID).isEmpty(); });
    return isPresent ? ZALNullableString("") : std::nullopt;
}

template <typename Value>
void setBasicField(zal::ID3v2Store* v2, TagLib::ID3v1::Tag* v1, const char* id,
                   void (TagLib::Tag::*set)(Value), const std::type_identity_t<std::decay_t<Value>>& value) {
    if (v2 != nullptr) zal::makeWayForText(*v2, id);
    if (v2 != nullptr) (v2->tagToEdit(id).*set)(value);
    if (v1 != nullptr) (v1->*set)(value);
}

// As TagLib looks for it.
UserTextIdentificationFrame* energyFrame(const TagLib::ID3v2::Tag& tag) {
    for (TagLib::ID3v2::Frame* frame : zal::framesWithID(tag, "TXXX")) {
        auto* text = dynamic_cast<UserTextIdentificationFrame*>(frame);
        if (text != nullptr && text->description() == energyDescription) return text;
    }
    return nullptr;
}

bool isASCII(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}  // namespace

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
    if (const auto* v1 = s.file->v1(); v1 != nullptr && !v1->tag().isEmpty()) s.v1Tag = &s.file->v1()->tag();
    s.setV2TagsOf(*s.file);
    return true;
}

bool ZALTagID3::readOnly() const {
    return state().file != nullptr && state().stream->readOnly();
}
bool ZALTagID3::hasID3v1Tag() const {
    return state().v1Tag != nullptr;
}
bool ZALTagID3::hasID3v2Tag() const {
    return state().v2 != nullptr;
}
bool ZALTagID3::requiresSaving() const {
    return state().requiresSaving;
}
TagLib::ID3v2::Tag* ZALTagID3::v2Tag() const {
    return state_->v2 != nullptr ? &state_->v2->tagToEdit() : nullptr;
}

// Saving

bool ZALTagID3::save(ZALError* error) {
    if (!ZALTag::save(error)) return false;
    if (state().file == nullptr) return true;  // the other containers save themselves after this call
    State& s = state();
    const auto fill = [this] { return fillID3v2(); };
    const auto failure = zal::saveFile(*s.stream, *s.file, shouldStripID3v1Tag(), fill);
    if (failure) return failSave(error, failure);
    s.requiresSaving = false;
    return true;
}

bool ZALTagID3::fillID3v2() {
    const State& s = state();
    if (s.v1Tag == nullptr) return false;
    const bool isFilled = zal::fillFromID3v1(*s.file);
    // TagLib leaves the blanks at its end, with which some programs fill it.
    const std::string comment = zal::stringWithTagLibString(s.v1Tag->comment().stripWhiteSpace());
    if (comment.empty() || !isASCII(comment) || !zal::lacksFrame(*s.file, "COMM")) return isFilled;
    setPrimaryComment(comment);
    return true;
}

// Basic fields

ZALNullableString ZALTagID3::artist() const {
    return basicField(state().v2Tags, state().v1Tag, "TPE1", &TagLib::Tag::artist);
}
void ZALTagID3::setArtist(const ZALNullableString& artist) {
    setBasicField(state().v2, state().v1Tag, "TPE1", &TagLib::Tag::setArtist, zal::TagLibString(artist));
}

ZALNullableString ZALTagID3::album() const {
    return basicField(state().v2Tags, state().v1Tag, "TALB", &TagLib::Tag::album);
}
void ZALTagID3::setAlbum(const ZALNullableString& album) {
    setBasicField(state().v2, state().v1Tag, "TALB", &TagLib::Tag::setAlbum, zal::TagLibString(album));
}

ZALNullableString ZALTagID3::title() const {
    return basicField(state().v2Tags, state().v1Tag, "TIT2", &TagLib::Tag::title);
}
void ZALTagID3::setTitle(const ZALNullableString& title) {
    setBasicField(state().v2, state().v1Tag, "TIT2", &TagLib::Tag::setTitle, zal::TagLibString(title));
}

ZALNullableString ZALTagID3::genre() const {
    return basicField(state().v2Tags, state().v1Tag, "TCON", &TagLib::Tag::genre);
}
void ZALTagID3::setGenre(const ZALNullableString& genre) {
    setBasicField(state().v2, state().v1Tag, "TCON", &TagLib::Tag::setGenre, zal::TagLibString(genre));
}

std::int64_t ZALTagID3::year() const {
    const State& s = state();
    for (const TagLib::ID3v2::Tag* tag : s.v2Tags) {
        if (tag->year() != 0) return tag->year();
    }
    return s.v1Tag != nullptr ? s.v1Tag->year() : 0;
}
void ZALTagID3::setYear(std::int64_t year) {
    setBasicField(state().v2, state().v1Tag, "TDRC", &TagLib::Tag::setYear, zal::clampedUnsigned(year));
}

// Fields of the ID3v2 tag alone

ZALNullableString ZALTagID3::textOfFrame(const char* id) const {
    const auto* tag = state().v2TagWith(id);
    return tag != nullptr ? zal::textOfFirstFrame(*tag, id) : std::nullopt;
}

std::int64_t ZALTagID3::tempo() const {
    const auto* tag = state().v2TagWith("TBPM");
    const auto* frame = tag != nullptr ? zal::firstFrame(*tag, "TBPM") : nullptr;
    return frame != nullptr ? frame->toString().toInt() : 0;
}
void ZALTagID3::setTempo(std::int64_t tempo) {
    if (state().v2 != nullptr) zal::setTextOfFirstFrame(*state().v2, "TBPM", std::to_string(tempo));
}

ZALNullableString ZALTagID3::initialKey() const {
    return textOfFrame("TKEY");
}
void ZALTagID3::setInitialKey(const ZALNullableString& key) {
    if (state().v2 != nullptr) zal::setTextOfFirstFrame(*state().v2, "TKEY", key);
}

std::int64_t ZALTagID3::energyLevel() const {
    const UserTextIdentificationFrame* frame = nullptr;
    for (const TagLib::ID3v2::Tag* tag : state().v2Tags) {
        if (frame == nullptr) frame = energyFrame(*tag);
    }
    if (frame == nullptr) return 0;
    const TagLib::String values = frame->asProperties()[energyDescription].toString(" ");
    return zal::integerValue(zal::stringWithTagLibString(values));
}
void ZALTagID3::setEnergyLevel(std::int64_t level) {
    if (state().v2 == nullptr) return;
    auto* frame = energyFrame(state().v2->tag());
    if (level <= 0 && frame == nullptr) return;
    TagLib::ID3v2::Tag& tag = state().v2->tagToEdit("TXXX");
    if (level <= 0) return tag.removeFrame(frame);
    const TagLib::String text(std::to_string(level));
    if (frame != nullptr) {
        frame->setText(text);
    } else {
        tag.addFrame(new UserTextIdentificationFrame(energyDescription, TagLib::StringList(text),
                                                     TagLib::String::UTF8));
    }
}

ZALNullableString ZALTagID3::modifiedBy() const {
    return textOfFrame("TPE4");
}
void ZALTagID3::setModifiedBy(const ZALNullableString& name) {
    if (state().v2 != nullptr) zal::setOrRemoveFirstFrame(*state().v2, "TPE4", name);
}

// Grouping: some programs read TIT1, others GRP1

ZALNullableString ZALTagID3::grouping() const {
    const ZALNullableString grouping = GRP1Grouping();
    return grouping ? grouping : TIT1Grouping();
}
void ZALTagID3::setGrouping(const ZALNullableString& grouping) {
    if (state().v2 == nullptr) return;
    if (GRP1Grouping() != grouping) {
        setGRP1Grouping(grouping);
        state().requiresSaving = true;
    }
    if (TIT1Grouping() != grouping) {
        setTIT1Grouping(grouping);
        state().requiresSaving = true;
    }
}

ZALNullableString ZALTagID3::TIT1Grouping() const {
    return textOfFrame("TIT1");
}
void ZALTagID3::setTIT1Grouping(const ZALNullableString& grouping) {
    if (state().v2 != nullptr) zal::setOrRemoveFirstFrame(*state().v2, "TIT1", grouping);
}

ZALNullableString ZALTagID3::GRP1Grouping() const {
    const auto* tag = state().v2TagWith("GRP1");
    return tag != nullptr ? zal::textOfGRP1(zal::firstFrame(*tag, "GRP1")) : std::nullopt;
}
void ZALTagID3::setGRP1Grouping(const ZALNullableString& grouping) {
    if (state().v2 == nullptr) return;
    zal::setOrRemoveFirstFrame(*state().v2, "GRP1", grouping);
    if (grouping.value_or("").empty()) return;
    auto* frame = dynamic_cast<TextIdentificationFrame*>(zal::firstFrame(state().v2->tag(), "GRP1"));
    if (frame != nullptr)
        frame->setTextEncoding(isASCII(*grouping) ? TagLib::String::Latin1 : TagLib::String::UTF16);
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
