#include "stores/ID3v1Fields.h"

#include "base/Numbers.h"
#include "taglib/TagLibText.h"

namespace zal {

namespace {

using TagLib::Tag;

struct Place {
    TextField field;
    TagLib::String (Tag::*text)() const;
    void (Tag::*setText)(const TagLib::String&);
};
constexpr Place places[] = {
    {TextField::title, &Tag::title, &Tag::setTitle},       {TextField::artist, &Tag::artist, &Tag::setArtist},
    {TextField::album, &Tag::album, &Tag::setAlbum},       {TextField::genre, &Tag::genre, &Tag::setGenre},
    {TextField::comment, &Tag::comment, &Tag::setComment},
};

}  // namespace

ZALNullableString ID3v1Fields::text(TextField field) const {
    const Place* place = rowOf(places, field);
    const TagLib::String text = place != nullptr ? (tag_.*place->text)() : TagLib::String();
    return text.isEmpty() ? std::nullopt : ZALNullableString(stringWithTagLibString(text));
}

void ID3v1Fields::setText(TextField field, const ZALNullableString& text) {
    if (const Place* place = rowOf(places, field)) (tag_.*place->setText)(TagLibString(text));
}

std::int64_t ID3v1Fields::number(NumberField field) const {
    return field == NumberField::year ? tag_.year() : 0;
}

void ID3v1Fields::setNumber(NumberField field, std::int64_t number) {
    if (field == NumberField::year) tag_.setYear(clampedUnsigned(number));
}

}  // namespace zal
