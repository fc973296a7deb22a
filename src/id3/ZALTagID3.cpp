#include <zaltag/id3/ZALTagID3.h>

#include "base/Numbers.h"
#include "base/Unicode.h"
#include "id3/ID3Files.h"
#include "id3/ID3Frames.h"
#include "id3/ID3State.h"
#include "id3/TagFile.h"
#include "id3/TagLibText.h"
#include "tag/ZALTagBackEnds.h"

#include <textidentificationframe.h>
#include <tpropertymap.h>

#include <algorithm>

namespace {

using TagLib::ID3v2::TextIdentificationFrame;
using TagLib::ID3v2::UserTextIdentificationFrame;

constexpr char energyDescription[] = "EnergyLevel";

// A basic field: from the ID3v2 tag, or from the ID3v1 tag where that has nothing. Null when neither holds
// it.
ZALNullableString basicField(const TagLib::ID3v2::Tag* v2, const TagLib::ID3v1::Tag* v1, const char* frameID,
                             TagLib::String (TagLib::Tag::*field)() const) {
    if (v2 != nullptr) {
        const TagLib::String text = (v2->*field)();
        if (!text.isEmpty()) return zal::stringWithTagLibString(text);
    }
    if (v1 != nullptr) {
        const TagLib::String text = (v1->*field)();
        if (!text.isEmpty()) return zal::stringWithTagLibString(text);
    }
    const bool present = v2 != nullptr && !v2->frameList(frameID).isEmpty();
    return present ? ZALNullableString("") : std::nullopt;
}

template <typename Value>
void setBasicField(TagLib::ID3v2::Tag* v2, TagLib::ID3v1::Tag* v1, const char* id,
                   void (TagLib::Tag::*set)(Value), const std::type_identity_t<std::decay_t<Value>>& value) {
    if (v2 != nullptr) zal::makeWayForText(*v2, id);
    if (v2 != nullptr) (v2->*set)(value);
    if (v1 != nullptr) (v1->*set)(value);
}

// A genre stored as a number of the ID3v1 list becomes its name.
void normalizeGenre(TagLib::ID3v2::Tag& tag) {
    const auto* frame = dynamic_cast<TextIdentificationFrame*>(zal::firstFrame(tag, "TCON"));
    if (frame == nullptr) return;  // one that cannot be read would be lost by setting it
    tag.setGenre(tag.genre());
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

std::shared_ptr<ZALTagID3> ZALTagID3::tagAtPath(const ZALNullableString& path, bool readOnly) {
    return canInitWithPath(path) ? initWithPath(path, readOnly) : nullptr;
}

std::shared_ptr<ZALTag> ZALTagID3::initWithPath(const ZALNullableString& path) {
    return initReceiver("ZALTagID3", path);
}

std::shared_ptr<ZALTagID3> ZALTagID3::initWithPath(const ZALNullableString& path, bool readOnly) {
    const auto open = [readOnly](const std::string& file) {
        const std::shared_ptr<ZALTagID3> tag(new ZALTagID3);
        return tag->openMP3(file, readOnly) ? tag : nullptr;
    };
    return zal::openTag("-[ZALTagID3 initWithPath:readOnly:]", path, canInitWithPath(path), open);
}

bool ZALTagID3::openMP3(const std::string& path, bool readOnly) {
    State& s = state();
    s.stream = zal::TagLibStream::open(path, readOnly);
    if (s.stream == nullptr) return false;
    s.file = zal::mpegFile(*s.stream);
    if (s.file == nullptr) return false;
    s.v1Tag = s.file->ID3v1Tag(false);
    if (s.v1Tag != nullptr && s.v1Tag->isEmpty()) s.v1Tag = nullptr;
    s.v2Tag = s.file->ID3v2Tag(true);
    normalizeGenre(*s.v2Tag);
    return true;
}

bool ZALTagID3::readOnly() const {
    return state().file != nullptr && state().file->readOnly();
}
bool ZALTagID3::hasID3v1Tag() const {
    return state().v1Tag != nullptr;
}
bool ZALTagID3::hasID3v2Tag() const {
    return state().v2Tag != nullptr;
}
bool ZALTagID3::requiresSaving() const {
    return state().requiresSaving;
}
TagLib::ID3v2::Tag* ZALTagID3::v2Tag() const {
    return state().v2Tag;
}

// Saving

bool ZALTagID3::save(ZALError* error) {
    if (!ZALTag::save(error)) return false;
    if (state().file == nullptr) return true;  // the other containers save themselves after this call
    if (!zal::saveTag(path(), *state().stream, [this] { return writeMP3(); })) return failSave(error);
    state().requiresSaving = false;
    return true;
}

bool ZALTagID3::writeMP3() {
    State& s = state();
    // The ID3v1 tag goes first: stripping, below, may take it away again.
    if (s.v1Tag != nullptr && !writeID3v1()) return false;
    const auto strip = shouldStripID3v1Tag() ? TagLib::File::StripOthers : TagLib::File::StripNone;
    return zal::writeMP3File(*s.file, *s.stream, zal::describe(path()), TagLib::MPEG::File::ID3v2, strip);
}

bool ZALTagID3::writeID3v1() {
    State& s = state();
    // TagLib fills an empty ID3v1 comment from its own choice among the comment frames. Where that is not the
    // primary one, a blank keeps it out; the tag in memory stays empty.
    const bool placeholder = s.v1Tag->comment().isEmpty() &&
                             zal::stringWithTagLibString(s.v2Tag->comment()) != comment().value_or("");
    if (placeholder) s.v1Tag->setComment(" ");
    const bool saved = zal::writeMP3File(*s.file, *s.stream, zal::describe(path()), TagLib::MPEG::File::ID3v1,
                                         TagLib::File::StripNone);
    if (placeholder) s.v1Tag->setComment("");
    return saved;
}

// Basic fields

ZALNullableString ZALTagID3::artist() const {
    return basicField(state().v2Tag, state().v1Tag, "TPE1", &TagLib::Tag::artist);
}
void ZALTagID3::setArtist(const ZALNullableString& artist) {
    setBasicField(state().v2Tag, state().v1Tag, "TPE1", &TagLib::Tag::setArtist, zal::TagLibString(artist));
}

ZALNullableString ZALTagID3::album() const {
    return basicField(state().v2Tag, state().v1Tag, "TALB", &TagLib::Tag::album);
}
void ZALTagID3::setAlbum(const ZALNullableString& album) {
    setBasicField(state().v2Tag, state().v1Tag, "TALB", &TagLib::Tag::setAlbum, zal::TagLibString(album));
}

ZALNullableString ZALTagID3::title() const {
    return basicField(state().v2Tag, state().v1Tag, "TIT2", &TagLib::Tag::title);
}
void ZALTagID3::setTitle(const ZALNullableString& title) {
    setBasicField(state().v2Tag, state().v1Tag, "TIT2", &TagLib::Tag::setTitle, zal::TagLibString(title));
}

ZALNullableString ZALTagID3::genre() const {
    return basicField(state().v2Tag, state().v1Tag, "TCON", &TagLib::Tag::genre);
}
void ZALTagID3::setGenre(const ZALNullableString& genre) {
    setBasicField(state().v2Tag, state().v1Tag, "TCON", &TagLib::Tag::setGenre, zal::TagLibString(genre));
}

std::int64_t ZALTagID3::year() const {
    const State& s = state();
    const unsigned v2Year = s.v2Tag != nullptr ? s.v2Tag->year() : 0;
    if (v2Year != 0) return v2Year;
    return s.v1Tag != nullptr ? s.v1Tag->year() : 0;
}
void ZALTagID3::setYear(std::int64_t year) {
    setBasicField(state().v2Tag, state().v1Tag, "TDRC", &TagLib::Tag::setYear, zal::clampedUnsigned(year));
}

// Fields of the ID3v2 tag alone

std::int64_t ZALTagID3::tempo() const {
    const auto* tag = state().v2Tag;
    const auto* frame = tag != nullptr ? zal::firstFrame(*tag, "TBPM") : nullptr;
    return frame != nullptr ? frame->toString().toInt() : 0;
}
void ZALTagID3::setTempo(std::int64_t tempo) {
    if (state().v2Tag != nullptr) zal::setTextOfFirstFrame(*state().v2Tag, "TBPM", std::to_string(tempo));
}

ZALNullableString ZALTagID3::initialKey() const {
    return state().v2Tag != nullptr ? zal::textOfFirstFrame(*state().v2Tag, "TKEY") : std::nullopt;
}
void ZALTagID3::setInitialKey(const ZALNullableString& key) {
    if (state().v2Tag != nullptr) zal::setTextOfFirstFrame(*state().v2Tag, "TKEY", key);
}

std::int64_t ZALTagID3::energyLevel() const {
    auto* tag = state().v2Tag;
    const auto* frame = tag != nullptr ? UserTextIdentificationFrame::find(tag, energyDescription) : nullptr;
    if (frame == nullptr) return 0;
    const TagLib::String values = frame->asProperties()[energyDescription].toString(" ");
    return zal::integerValue(zal::stringWithTagLibString(values));
}
void ZALTagID3::setEnergyLevel(std::int64_t level) {
    auto* tag = state().v2Tag;
    if (tag == nullptr) return;
    auto* frame = UserTextIdentificationFrame::find(tag, energyDescription);
    if (level <= 0) {
        if (frame != nullptr) tag->removeFrame(frame);
        return;
    }
    const TagLib::String text(std::to_string(level));
    if (frame != nullptr) {
        frame->setText(text);
    } else {
        tag->addFrame(new UserTextIdentificationFrame(energyDescription, TagLib::StringList(text),
                                                      TagLib::String::UTF8));
    }
}

ZALNullableString ZALTagID3::modifiedBy() const {
    return state().v2Tag != nullptr ? zal::textOfFirstFrame(*state().v2Tag, "TPE4") : std::nullopt;
}
void ZALTagID3::setModifiedBy(const ZALNullableString& name) {
    if (state().v2Tag != nullptr) zal::setOrRemoveFirstFrame(*state().v2Tag, "TPE4", name);
}

// Grouping: some programs read TIT1, others GRP1

ZALNullableString ZALTagID3::grouping() const {
    const ZALNullableString grouping = GRP1Grouping();
    return grouping ? grouping : TIT1Grouping();
}
void ZALTagID3::setGrouping(const ZALNullableString& grouping) {
    if (state().v2Tag == nullptr) return;
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
    return state().v2Tag != nullptr ? zal::textOfFirstFrame(*state().v2Tag, "TIT1") : std::nullopt;
}
void ZALTagID3::setTIT1Grouping(const ZALNullableString& grouping) {
    if (state().v2Tag != nullptr) zal::setOrRemoveFirstFrame(*state().v2Tag, "TIT1", grouping);
}

ZALNullableString ZALTagID3::GRP1Grouping() const {
    const auto* tag = state().v2Tag;
    return tag != nullptr ? zal::textOfGRP1(zal::firstFrame(*tag, "GRP1")) : std::nullopt;
}
void ZALTagID3::setGRP1Grouping(const ZALNullableString& grouping) {
    auto* tag = state().v2Tag;
    if (tag == nullptr) return;
    zal::setOrRemoveFirstFrame(*tag, "GRP1", grouping);
    if (grouping.value_or("").empty()) return;
    auto* frame = dynamic_cast<TextIdentificationFrame*>(zal::firstFrame(*tag, "GRP1"));
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
