#include "stores/TagStore.h"

#include "base/Numbers.h"
#include "records/StoredRecord.h"

#include <fmt/ranges.h>

namespace zal {

namespace {

struct BasicField {
    TextField field;
    const char* name;
};
constexpr BasicField basicFields[] = {{TextField::title, "TITLE"},
                                      {TextField::artist, "ARTIST"},
                                      {TextField::album, "ALBUM"},
                                      {TextField::genre, "GENRE"},
                                      {TextField::comment, "COMMENT"}};
constexpr char yearName[] = "DATE";

}  // namespace

Properties::Values Properties::of(const std::string& name) const {
    const auto found = values.find(name);
    return found != values.end() ? found->second : Values();
}

Properties TagStore::properties() const {
    Properties found;
    for (const auto& [field, name] : basicFields) {
        const ZALNullableString value = text(field);
        if (value && !value->empty()) found.values[name] = {*value};
    }
    const std::int64_t year = number(NumberField::year);
    if (year > 0) found.values[yearName] = {std::to_string(year)};
    return found;
}

void TagStore::setProperty(const std::string& name, const Properties::Values& values) {
    const std::string text = fmt::format("{}", fmt::join(values, " "));
    if (name == yearName) return setNumber(NumberField::year, integerValue(text));
    for (const auto& [field, basicName] : basicFields) {
        if (name == basicName) setText(field, values.empty() ? std::nullopt : ZALNullableString(text));
    }
}

Properties::Values TagStore::heldValues(const std::string& name, const Properties::Values& values) const {
    const bool isHeld = std::ranges::any_of(basicFields, [&](auto& one) { return name == one.name; });
    return isHeld ? Properties::Values{fmt::format("{}", fmt::join(values, " "))} : Properties::Values();
}

void setRecord(TagStore& store, const Carrier& carrier, const ZALTagCustomProperty* record) {
    const ZALNullableData stored = storedRecord(record);
    if (stored) store.setPayload(carrier, stored->empty() ? std::nullopt : stored);
}

}  // namespace zal
