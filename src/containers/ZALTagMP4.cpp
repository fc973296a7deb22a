#include <zaltag/containers/ZALTagMP4.h>

#include "base/Numbers.h"
#include "containers/MP4State.h"
#include "containers/TextCarrier.h"
#include "id3/TagFile.h"
#include "id3/TagLibText.h"
#include "tag/ZALTagBackEnds.h"

#include <algorithm>
#include <cstdint>

namespace zal {

ZALNullableString itemText(const TagLib::MP4::Tag& tag, const std::string& name) {
    const TagLib::String key = latin1TagLibString(name);
    if (!tag.contains(key)) return std::nullopt;  // asking for the item would add it
    return joinedText(tag.item(key).toStringList());
}

void setItemText(TagLib::MP4::Tag& tag, const std::string& name, const TagLib::String& text) {
    tag.setItem(latin1TagLibString(name), TagLib::StringList(text));
}

void removeItem(TagLib::MP4::Tag& tag, const std::string& name) {
    tag.removeItem(latin1TagLibString(name));
}

}  // namespace zal

namespace {

constexpr char tempoItem[] = "tmpo";
constexpr char keyItem[] = "----:com.apple.iTunes:initialkey";
constexpr char energyItem[] = "----:com.apple.iTunes:energylevel";
constexpr char groupingItem[] = "\251grp";

// A basic field; null when its item is absent.
ZALNullableString basicField(const TagLib::MP4::Tag& tag, const char* item,
                             TagLib::String (TagLib::MP4::Tag::*field)() const) {
    if (!tag.contains(item)) return std::nullopt;
    return zal::stringWithTagLibString((tag.*field)());
}

}  // namespace

ZALTagMP4::ZALTagMP4() : state_(std::make_unique<State>()) {}
ZALTagMP4::~ZALTagMP4() = default;

// Opening

const ZALArray<std::string>& ZALTagMP4::supportedFileTypes() {
    static const ZALArray<std::string> types{"m4a", "mp4"};
    return types;
}

bool ZALTagMP4::canInitWithPath(const ZALNullableString& path) {
    return zal::hasExtensionAmong(path, supportedFileTypes());
}

std::shared_ptr<ZALTagMP4> ZALTagMP4::tagAtPath(const ZALNullableString& path, bool readOnly,
                                                ZALError* error) {
    return canInitWithPath(path) ? initWithPath(path, readOnly, error) : nullptr;
}

std::shared_ptr<ZALTag> ZALTagMP4::initWithPath(const ZALNullableString& path) {
    return initReceiver("ZALTagMP4", path);
}

std::shared_ptr<ZALTagMP4> ZALTagMP4::initWithPath(const ZALNullableString& path, bool readOnly,
                                                   ZALError* error) {
    const auto open = [readOnly](const std::string& file, zal::Failure& failure) {
        const std::shared_ptr<ZALTagMP4> tag(new ZALTagMP4);
        return tag->openMP4(file, readOnly, failure) ? tag : nullptr;
    };
    return zal::openTag("-[ZALTagMP4 initWithPath:readOnly:]", path, canInitWithPath(path), error, open);
}

bool ZALTagMP4::openMP4(const std::string& path, bool readOnly, zal::Failure& failure) {
    state_->stream = zal::TagLibStream::open(path, readOnly, &failure);
    if (state_->stream == nullptr) return false;
    state_->file = zal::MP4File::open(*state_->stream);
    if (state_->file == nullptr) return false;
    state_->tag = &state_->file->tag();
    return true;
}

bool ZALTagMP4::readOnly() const {
    return state_->stream->readOnly();
}

// Saving

bool ZALTagMP4::save(ZALError* error) {
    if (!ZALTag::save(error)) return false;
    const auto failure = zal::saveFile(*state_->stream, *state_->file);
    return !failure || failSave(error, failure);
}

// Basic fields

ZALNullableString ZALTagMP4::artist() const {
    return basicField(*state_->tag, "\251ART", &TagLib::MP4::Tag::artist);
}
void ZALTagMP4::setArtist(const ZALNullableString& artist) {
    state_->tag->setArtist(zal::TagLibString(artist));
}

ZALNullableString ZALTagMP4::album() const {
    return basicField(*state_->tag, "\251alb", &TagLib::MP4::Tag::album);
}
void ZALTagMP4::setAlbum(const ZALNullableString& album) {
    state_->tag->setAlbum(zal::TagLibString(album));
}

ZALNullableString ZALTagMP4::title() const {
    return basicField(*state_->tag, "\251nam", &TagLib::MP4::Tag::title);
}
void ZALTagMP4::setTitle(const ZALNullableString& title) {
    state_->tag->setTitle(zal::TagLibString(title));
}

ZALNullableString ZALTagMP4::genre() const {
    return basicField(*state_->tag, "\251gen", &TagLib::MP4::Tag::genre);
}
void ZALTagMP4::setGenre(const ZALNullableString& genre) {
    state_->tag->setGenre(zal::TagLibString(genre));
}

ZALNullableString ZALTagMP4::comment() const {
    return basicField(*state_->tag, "\251cmt", &TagLib::MP4::Tag::comment);
}
void ZALTagMP4::setComment(const ZALNullableString& comment) {
    state_->tag->setComment(zal::TagLibString(comment));
}

ZALArray<ZALTagComment> ZALTagMP4::allComments() const {
    return zal::onlyComment(comment());
}

std::int64_t ZALTagMP4::year() const {
    return state_->tag->year();
}
void ZALTagMP4::setYear(std::int64_t year) {
    state_->tag->setYear(zal::clampedUnsigned(year));
}

// Fields of DJ programs

std::int64_t ZALTagMP4::tempo() const {
    return state_->tag->contains(tempoItem) ? state_->tag->item(tempoItem).toInt() : 0;
}
void ZALTagMP4::setTempo(std::int64_t tempo) {
    state_->tag->setItem(tempoItem, static_cast<int>(std::clamp<std::int64_t>(tempo, 0, UINT16_MAX)));
}

ZALNullableString ZALTagMP4::initialKey() const {
    return zal::itemText(*state_->tag, keyItem);
}
void ZALTagMP4::setInitialKey(const ZALNullableString& key) {
    if (key) {
        zal::setItemText(*state_->tag, keyItem, zal::TagLibString(key));
    } else {
        zal::removeItem(*state_->tag, keyItem);
    }
}

std::int64_t ZALTagMP4::energyLevel() const {
    return zal::integerValue(zal::itemText(*state_->tag, energyItem).value_or(""));
}
void ZALTagMP4::setEnergyLevel(std::int64_t level) {
    if (level > 0) {
        zal::setItemText(*state_->tag, energyItem, std::to_string(level));
    } else {
        zal::removeItem(*state_->tag, energyItem);
    }
}

ZALNullableString ZALTagMP4::grouping() const {
    return zal::itemText(*state_->tag, groupingItem);
}
void ZALTagMP4::setGrouping(const ZALNullableString& grouping) {
    if (grouping.value_or("").empty()) {
        zal::removeItem(*state_->tag, groupingItem);
    } else {
        zal::setItemText(*state_->tag, groupingItem, zal::TagLibString(grouping));
    }
}
