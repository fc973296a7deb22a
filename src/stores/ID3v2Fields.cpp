#include "stores/ID3v2Fields.h"

#include "base/Numbers.h"
#include "base/Unicode.h"
#include "stores/ID3Frames.h"
#include "stores/ID3v2Comments.h"
#include "stores/ID3v2Properties.h"
#include "stores/TagLibProperties.h"
#include "taglib/TagLibText.h"

#include <generalencapsulatedobjectframe.h>
#include <textidentificationframe.h>
#include <tpropertymap.h>

#include <algorithm>

namespace zal {

namespace {

using TagLib::ID3v2::GeneralEncapsulatedObjectFrame;
using TagLib::ID3v2::UserTextIdentificationFrame;

// What the empty text does to the frames of a field.
enum class Emptied { stays, removesFirst, removesAll };

struct Name {
    TextField field;
    const char* frame;
    Emptied emptied;
};
constexpr Name names[] = {
    {TextField::title, "TIT2", Emptied::removesAll}, {TextField::artist, "TPE1", Emptied::removesAll},
    {TextField::album, "TALB", Emptied::removesAll}, {TextField::genre, "TCON", Emptied::removesAll},
    {TextField::initialKey, "TKEY", Emptied::stays}, {TextField::modifiedBy, "TPE4", Emptied::removesFirst},
};
constexpr char tempoFrame[] = "TBPM";
constexpr char yearFrame[] = "TDRC";
constexpr char energyFrame[] = "TXXX";
constexpr char energyDescription[] = "EnergyLevel";

UserTextIdentificationFrame* energyOf(const TagLib::ID3v2::Tag& tag) {
    for (TagLib::ID3v2::Frame* frame : framesWithID(tag, energyFrame)) {
        auto* text = dynamic_cast<UserTextIdentificationFrame*>(frame);
        if (text != nullptr && text->description() == energyDescription) return text;
    }
    return nullptr;
}

std::int64_t energyLevelOf(const TagLib::ID3v2::Tag& tag) {
    const UserTextIdentificationFrame* frame = energyOf(tag);
    if (frame == nullptr) return 0;
    const TagLib::String values = frame->asProperties()[energyDescription].toString(" ");
    return integerValue(stringWithTagLibString(values));
}

}  // namespace

ZALNullableString ID3v2Fields::text(TextField field) const {
    if (field == TextField::comment) return primaryComment(tag_);
    if (field == TextField::grouping) {
        const ZALNullableString grouping = textOfGRP1(tag_);
        return grouping ? grouping : textOfFirstFrame(tag_, contentGroupID);
    }
    const Name* name = rowOf(names, field);
    if (firstFrame(tag_, name->frame) == nullptr) return std::nullopt;
    // TagLib joins several genres, and names those that are numbers.
    if (field == TextField::genre) return stringWithTagLibString(tag_.genre());
    return textOfFirstFrame(tag_, name->frame);
}

void ID3v2Fields::setText(TextField field, const ZALNullableString& text) {
    if (field == TextField::comment) return setComment(text);
    if (field == TextField::grouping) return setGrouping(text);
    const Name* name = rowOf(names, field);
    const bool isEmpty = text.value_or("").empty();
    if (isEmpty && name->emptied == Emptied::removesAll) {
        store_->tagToEdit(name->frame).removeFrames(name->frame);
    } else if (isEmpty && name->emptied == Emptied::removesFirst) {
        removeFirstFrame(*store_, name->frame);
    } else {
        setTextOfFirstFrame(*store_, name->frame, text);
    }
}

void ID3v2Fields::setComment(const ZALNullableString& text) {
    if (setPrimaryComment(*store_, text)) requiresSaving_ = true;
}

void ID3v2Fields::setGrouping(const ZALNullableString& text) {
    if (textOfGRP1(tag_) != text) {
        setTextOfGRP1(*store_, text);
        requiresSaving_ = true;
    }
    if (textOfFirstFrame(tag_, contentGroupID) != text) {
        setOrRemoveFirstFrame(*store_, contentGroupID, text);
        requiresSaving_ = true;
    }
}

std::int64_t ID3v2Fields::number(NumberField field) const {
    if (field == NumberField::year) return tag_.year();
    if (field == NumberField::energyLevel) return energyLevelOf(tag_);
    const auto* frame = firstFrame(tag_, tempoFrame);
    return frame != nullptr ? frame->toString().toInt() : 0;
}

void ID3v2Fields::setNumber(NumberField field, std::int64_t number) {
    if (field == NumberField::energyLevel) return setEnergyLevel(number);
    if (field == NumberField::tempo) return setTextOfFirstFrame(*store_, tempoFrame, std::to_string(number));
    makeWayForText(*store_, yearFrame);
    store_->tagToEdit(yearFrame).setYear(clampedUnsigned(number));
}

void ID3v2Fields::setEnergyLevel(std::int64_t level) {
    auto* frame = energyOf(tag_);
    if (level <= 0 && frame == nullptr) return;
    TagLib::ID3v2::Tag& tag = store_->tagToEdit(energyFrame);
    if (level <= 0) return tag.removeFrame(frame);
    const TagLib::String text(std::to_string(level));
    if (frame != nullptr) return frame->setText(text);
    tag.addFrame(
        new UserTextIdentificationFrame(energyDescription, TagLib::StringList(text), TagLib::String::UTF8));
}

Properties ID3v2Fields::properties() const {
    return propertiesWithTagLibMap(propertiesOf(tag_));
}

void ID3v2Fields::setProperty(const std::string& name, const Properties::Values& values) {
    zal::setProperty(*store_, name, TagLibStrings(values));
}

Properties::Values ID3v2Fields::heldValues(const std::string& name, const Properties::Values& values) const {
    return stringsWithTagLibStrings(zal::heldValues(name, TagLibStrings(values)));
}

ZALNullableData ID3v2Fields::payload(const Carrier& carrier) const {
    return objectOf(tag_, carrier.object);
}

void ID3v2Fields::setPayload(const Carrier& carrier, const ZALNullableData& payload) {
    if (payload) {
        setObject(*store_, carrier.object, *payload);
    } else {
        removeObject(*store_, carrier.object);
    }
}

void ID3v2Fields::movePayloadToEnd(const Carrier& carrier) {
    if (auto* frame = objectFrame(tag_, carrier.object)) moveToEnd(*store_, frame);
}

bool ID3v2Fields::holdsSeratoMetadata() const {
    return std::ranges::any_of(framesWithID(tag_, "GEOB"), [](const TagLib::ID3v2::Frame* frame) {
        const auto* object = dynamic_cast<const GeneralEncapsulatedObjectFrame*>(frame);
        return object != nullptr && object->description().find("Serato") >= 0;
    });
}

bool ID3v2Fields::holdsTraktorMetadata() const {
    return !traktorFrames(tag_).empty();
}

}  // namespace zal
