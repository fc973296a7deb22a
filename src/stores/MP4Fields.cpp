#include "stores/MP4Fields.h"

#include "base/Numbers.h"
#include "stores/MP4Items.h"
#include "stores/TagLibProperties.h"
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
// Where fields stand that have no item of their own.
const TagLib::String freeFormPrefix = "----:com.apple.iTunes:";

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

// The name of a property that TagLib does not know; empty for an item that is none.
std::string freeFormName(const TagLib::String& item) {
    const bool isOne = item.startsWith(freeFormPrefix);
    return isOne ? stringWithTagLibString(item.substr(freeFormPrefix.size()).upper()) : std::string();
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

Properties MP4Fields::properties() const {
    const TagLib::PropertyMap known = tag_.properties();
    Properties found = propertiesWithTagLibMap(known);
    found.unsupported.clear();
    for (const TagLib::String& item : known.unsupportedData()) {
        const std::string name = freeFormName(item);
        const TagLib::StringList values = tag_.item(item).toStringList();
        if (name.empty() || values.isEmpty()) {
            found.unsupported.push_back(stringWithTagLibString(item));
        } else {
            found.values[name] = stringsWithTagLibStrings(values);
        }
    }
    return found;
}

// The items that TagLib has for a name; one that it does not know is a freeform one, under the name that
// stands in the file.
TagLib::MP4::ItemMap MP4Fields::itemsOf(const std::string& name, const Properties::Values& values) const {
    TagLib::MP4::Tag items;
    TagLib::PropertyMap properties;
    properties.insert(name, TagLibStrings(values));
    if (items.setProperties(properties).isEmpty()) return items.itemMap();
    TagLib::String key = freeFormPrefix + name;
    for (const auto& [item, value] : tag_.itemMap()) {
        if (freeFormName(item) == name) key = item;
    }
    TagLib::MP4::ItemMap own;
    own.insert(key, TagLibStrings(values));
    return own;
}

void MP4Fields::setProperty(const std::string& name, const Properties::Values& values) {
    const bool isTakenAway = values.empty();
    for (const auto& [key, item] : itemsOf(name, isTakenAway ? Properties::Values{"1"} : values)) {
        isTakenAway ? tag_.removeItem(key) : tag_.setItem(key, item);
    }
}

Properties::Values MP4Fields::heldValues(const std::string& name, const Properties::Values& values) const {
    MP4Items file{{}};
    MP4Fields(file.tag()).setProperty(name, values);
    MP4Items again(file.merged());
    return MP4Fields(again.tag()).properties().of(name);
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
