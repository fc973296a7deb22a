#include "stores/InfoFields.h"

#include "base/Numbers.h"
#include "taglib/TagLibText.h"

namespace zal {

namespace {

struct Name {
    TextField field;
    const char* id;
};
constexpr Name names[] = {{TextField::title, "INAM"},
                          {TextField::artist, "IART"},
                          {TextField::album, "IPRD"},
                          {TextField::genre, "IGNR"},
                          {TextField::comment, "ICMT"}};

}  // namespace

ZALNullableString InfoFields::text(TextField field) const {
    const Name* name = rowOf(names, field);
    const bool isThere = name != nullptr && tag_.fieldListMap().contains(name->id);
    return isThere ? ZALNullableString(stringWithTagLibString(tag_.fieldText(name->id))) : std::nullopt;
}

void InfoFields::setText(TextField field, const ZALNullableString& text) {
    if (const Name* name = rowOf(names, field)) written_->setFieldText(name->id, TagLibString(text));
}

std::int64_t InfoFields::number(NumberField field) const {
    return field == NumberField::year ? tag_.year() : 0;
}

void InfoFields::setNumber(NumberField field, std::int64_t number) {
    if (field == NumberField::year) written_->setYear(clampedUnsigned(number));
}

}  // namespace zal
