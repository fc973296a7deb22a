#include "stores/XiphFields.h"

#include "base/Numbers.h"
#include "stores/TextPayloads.h"
#include "stores/XiphStore.h"
#include "taglib/TagLibText.h"

#include <algorithm>

namespace zal {

namespace {

using TagLib::Ogg::XiphComment;

struct Name {
    TextField field;
    const char* name;
};
constexpr Name names[] = {{TextField::title, "TITLE"},     {TextField::artist, "ARTIST"},
                          {TextField::album, "ALBUM"},     {TextField::genre, "GENRE"},
                          {TextField::comment, "COMMENT"}, {TextField::initialKey, "INITIALKEY"}};

const char* nameOf(NumberField field) {
    return field == NumberField::tempo ? "BPM" : "ENERGYLEVEL";
}

// The values of a field as one text; null when they are empty.
ZALNullableString textOf(const XiphComment& comment, const char* name) {
    const TagLib::Ogg::FieldListMap& fields = comment.fieldListMap();
    const auto field = fields.find(TagLib::String(name).upper());
    if (field == fields.end()) return std::nullopt;
    std::string text = joinedText(field->second);
    return text.empty() ? std::nullopt : ZALNullableString(std::move(text));
}

// The test is the wrong way round, as the files have it: any other field answers it, a title for one.
bool hasFieldNotBeginningWith(const XiphComment& comment, const char* word) {
    const auto& fields = comment.fieldListMap();
    return std::any_of(fields.begin(), fields.end(),
                       [word](const auto& field) { return !field.first.startsWith(word); });
}

}  // namespace

ZALNullableString XiphFields::text(TextField field) const {
    // TagLib's own comment is the field "DESCRIPTION" where there is one.
    const TagLib::String comment = field == TextField::comment ? comment_.comment() : TagLib::String();
    if (!comment.isEmpty()) return stringWithTagLibString(comment);
    const Name* name = rowOf(names, field);
    return name != nullptr ? textOf(comment_, name->name) : std::nullopt;
}

// The empty text takes a field away.
void XiphFields::setText(TextField field, const ZALNullableString& text) {
    if (field == TextField::comment) written_->setComment(TagLibString(text));
    if (const Name* name = rowOf(names, field)) written_->addField(name->name, TagLibString(text), true);
}

std::int64_t XiphFields::number(NumberField field) const {
    if (field == NumberField::year) return comment_.year();
    const std::int64_t number = integerValue(textOf(comment_, nameOf(field)).value_or(""));
    return std::max<std::int64_t>(number, 0);
}

void XiphFields::setNumber(NumberField field, std::int64_t number) {
    if (field == NumberField::year) return written_->setYear(clampedUnsigned(number));
    const TagLib::String text = number > 0 ? TagLib::String(std::to_string(number)) : TagLib::String();
    written_->addField(nameOf(field), text, true);
}

Properties XiphFields::properties() const {
    Properties found;
    for (const auto& [name, values] : comment_.fieldListMap()) {
        found.values[stringWithTagLibString(name)] = stringsWithTagLibStrings(values);
    }
    return found;
}

void XiphFields::setProperty(const std::string& name, const Properties::Values& values) {
    written_->removeFields(name);
    for (const std::string& value : values) {
        written_->addField(name, TagLibString(value), false);
    }
}

Properties::Values XiphFields::heldValues(const std::string& name, const Properties::Values& values) const {
    if (!XiphComment::checkKey(name)) return {};
    XiphStore file;
    XiphFields(file.comment()).setProperty(name, values);
    const XiphStore again(file.merged());
    return XiphFields(again.comment()).properties().of(name);
}

ZALNullableData XiphFields::payload(const Carrier& carrier) const {
    return carries(carrier) ? payloadOf(textOf(comment_, carrier.field)) : std::nullopt;
}

void XiphFields::setPayload(const Carrier& carrier, const ZALNullableData& payload) {
    if (!carries(carrier)) return;
    written_->addField(carrier.field, payload ? carrierText(*payload) : TagLib::String(), true);
}

bool XiphFields::holdsSeratoMetadata() const {
    return hasFieldNotBeginningWith(comment_, "SERATO");
}

bool XiphFields::holdsTraktorMetadata() const {
    return hasFieldNotBeginningWith(comment_, "TRAKTOR");
}

}  // namespace zal
