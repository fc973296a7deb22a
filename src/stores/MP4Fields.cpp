#include "stores/MP4Fields.h"

#include "base/Numbers.h"
#include "stores/TextPayloads.h"
#include "taglib/TagLibText.h"

#include <algorithm>
#include <cstdint>

namespace zal {

namespace {

struct Name {
    TextField field;
    const char* item;
    const char* separator = ", ";  // between its texts
    bool keepsEmpty = false;       // the empty text does not take it away
};
constexpr Name names[] = {{TextField::title, "\251nam"},
                          {TextField::artist, "\251ART"},
                          {TextField::album, "\251alb"},
                          {TextField::genre, "\251gen"},
                          {TextField::comment, "\251cmt"},
                          {TextField::initialKey, "----:com.apple.iTunes:initialkey", " ", true},
                          {TextField::grouping, "\251grp", " "}};
constexpr char tempoItem[] = "tmpo";
constexpr char energyItem[] = "----:com.apple.iTunes:energylevel";

ZALNullableString textOf(const TagLib::MP4::Tag& tag, const char* item, const char* separator) {
    const TagLib::String key = latin1TagLibString(item);
    if (!tag.contains(key)) return std::nullopt;  // asking for the item would add it
    return stringWithTagLibString(tag.item(key).toStringList().toString(separator));
}

// Null takes the item away.
void setText(TagLib::MP4::Tag& tag, const char* item, const std::optional<TagLib::String>& text) {
    const TagLib::String key = latin1TagLibString(item);
    if (text) {
        tag.setItem(key, TagLib::StringList(*text));
    } else {
        tag.removeItem(key);
    }
}

}  // namespace

ZALNullableString MP4Fields::text(TextField field) const {
    const Name* name = rowOf(names, field);
    return name != nullptr ? textOf(tag_, name->item, name->separator) : std::nullopt;
}

void MP4Fields::setText(TextField field, const ZALNullableString& text) {
    const Name* name = rowOf(names, field);
    if (name == nullptr) return;
    const bool stays = text && (name->keepsEmpty || !text->empty());
    zal::setText(tag_, name->item, stays ? std::optional(TagLibString(text)) : std::nullopt);
}

std::int64_t MP4Fields::number(NumberField field) const {
    if (field == NumberField::year) return tag_.year();
    if (field == NumberField::tempo) return tag_.contains(tempoItem) ? tag_.item(tempoItem).toInt() : 0;
    return integerValue(textOf(tag_, energyItem, " ").value_or(""));
}

// The tempo has 16 bits, and 0 is one.
void MP4Fields::setNumber(NumberField field, std::int64_t number) {
    if (field == NumberField::year) return tag_.setYear(clampedUnsigned(number));
    if (field == NumberField::tempo)
        return tag_.setItem(tempoItem, static_cast<int>(std::clamp<std::int64_t>(number, 0, UINT16_MAX)));
    zal::setText(tag_, energyItem,
                 number > 0 ? std::optional<TagLib::String>(std::to_string(number)) : std::nullopt);
}

ZALNullableData MP4Fields::payload(const Carrier& carrier) const {
    return payloadOf(textOf(tag_, carrier.item, " "));
}

void MP4Fields::setPayload(const Carrier& carrier, const ZALNullableData& payload) {
    zal::setText(tag_, carrier.item, payload ? std::optional(carrierText(*payload)) : std::nullopt);
}

bool MP4Fields::holdsSeratoMetadata() const {
    const auto& items = tag_.itemMap();
    return std::any_of(items.begin(), items.end(),
                       [](const auto& item) { return item.first.find("serato") >= 0; });
}

}  // namespace zal
