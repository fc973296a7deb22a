#include <zaltag/rekordbox/ZALRekordboxCuePoint.h>

#include "base/Description.h"
#include "base/Numbers.h"
#include "collection/CueNumbers.h"
#include "collection/XML.h"
#include "platform/Log.h"
#include "records/RecordHash.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

constexpr const char* typeNames[] = {"Cue", "FadeIn", "FadeOut", "Load", "Loop"};
constexpr std::int64_t mostSlots = 1000;  // nobody has as many
constexpr const char* colorNames[] = {"Red", "Green", "Blue"};

// Three numbers from 0 to 255; null for anything else.
std::optional<std::uint32_t> colorOf(const zal::XMLElement& element) {
    std::uint32_t color = 0;
    for (const char* name : colorNames) {
        const std::string text = element.attributeText(name);
        const bool isNumber =
            !text.empty() && text.size() <= 3 && text.find_first_not_of("0123456789") == text.npos;
        const std::int64_t part = zal::integerValue(text);
        if (!isNumber || part > 0xFF) return std::nullopt;
        color = color << 8 | static_cast<std::uint32_t>(part);
    }
    return color;
}

}  // namespace

ZALRekordboxCuePoint::ZALRekordboxCuePoint(const ZALTagCuePoint& cuePoint, std::int64_t index)
    : name_(cuePoint.name().value_or("")), start_(cuePoint.time()), num_(index), color_(cuePoint.color()) {
    if (!cuePoint.isLoop()) return;
    type_ = typeLoop;
    end_ = *cuePoint.end();
}

ZALTagCuePoint ZALRekordboxCuePoint::cuePoint() const {
    static_assert(typeFadeIn == 1 && typeFadeOut == 2 && typeLoad == 3, "as the kinds are numbered");
    ZALTagCuePoint point(start_, name_);
    if (type_ >= typeFadeIn && type_ <= typeLoad) point.setKind(static_cast<ZALTagCuePoint::Kind>(type_));
    if (type_ == typeLoop) point.setEnd(end_);
    point.setColor(color_);
    point.setPad(static_cast<int>(std::clamp<std::int64_t>(num_, ZALTagCuePoint::noPad, mostSlots)));
    return point;
}

ZALNullableString ZALRekordboxCuePoint::typeName() const {
    return zal::nameOfType(typeNames, type_);
}

bool ZALRekordboxCuePoint::isEqualToRekordboxCuePoint(const ZALRekordboxCuePoint& other) const {
    using zal::microseconds;
    if (type_ != other.type_ || num_ != other.num_) return false;
    if (microseconds(start_) != microseconds(other.start_)) return false;
    if (type_ == typeLoop && microseconds(end_) != microseconds(other.end_)) return false;
    return name_ == other.name_;
}

bool ZALRekordboxCuePoint::isSameMark(const ZALRekordboxCuePoint& other) const {
    return type_ == other.type_ && zal::microseconds(start_) == zal::microseconds(other.start_) &&
           name_ == other.name_ && (!color_ || color_ == other.color_) &&
           (type_ != typeLoop || zal::microseconds(end_) == zal::microseconds(other.end_));
}

std::size_t ZALRekordboxCuePoint::hash() const {
    return zal::formattedHash("{}-{}-{}-{}-{}", name_, type_, zal::microseconds(start_),
                              zal::microseconds(end_), num_);
}

std::string ZALRekordboxCuePoint::description() const {
    return fmt::format("{} - {} (i:{} t: {:.6f} t: {})",
                       zal::defaultDescription("ZALRekordboxCuePoint", this), name_,
                       static_cast<std::uint64_t>(num_), start_, zal::describe(typeName()));
}

std::optional<ZALRekordboxCuePoint> ZALRekordboxCuePoint::initWithXMLElement(const zal::XMLElement& element) {
    const char* start = element.attribute("Start");
    if (start == nullptr) return std::nullopt;
    ZALRekordboxCuePoint cue;
    cue.name_ = element.attributeText("Name");
    cue.start_ = zal::doubleValue(start);
    if (const char* type = element.attribute("Type")) cue.type_ = zal::integerValue(type);
    if (const char* end = element.attribute("End")) cue.end_ = zal::doubleValue(end);
    if (const char* number = element.attribute("Num")) cue.num_ = zal::integerValue(number);
    cue.color_ = colorOf(element);
    return cue;
}

std::optional<std::int64_t> ZALRekordboxCuePoint::orderOfXMLElement(const zal::XMLElement& element) {
    if (element.attribute("Start") == nullptr) return std::nullopt;
    const char* num = element.attribute("Num");
    return num == nullptr ? 0 : zal::integerValue(num);
}

void ZALRekordboxCuePoint::updateXMLElement(zal::XMLElement element) const {
    std::vector<zal::XMLAttribute> attributes;
    attributes.reserve(5);
    if (!name_.empty()) attributes.push_back({"Name", name_});
    if (type_ == typeLoop) attributes.push_back({"End", zal::shortestDecimal(end_)});
    attributes.push_back({"Start", zal::shortestDecimal(start_)});
    attributes.push_back({"Type", std::to_string(type_)});
    attributes.push_back({"Num", std::to_string(num_)});
    element.setAttributes(attributes);
}

zal::XMLElement ZALRekordboxCuePoint::xmlElement(zal::XMLElement parent) const {
    zal::XMLElement element = parent.appendChild("POSITION_MARK");
    if (!name_.empty()) element.setAttribute("Name", name_);
    element.setAttribute("Type", std::to_string(type_));
    element.setAttribute("Start", zal::shortestDecimal(start_));
    if (type_ == typeLoop) element.setAttribute("End", zal::shortestDecimal(end_));
    element.setAttribute("Num", std::to_string(num_));
    return element;
}

void ZALRekordboxCuePoint::writeTo(zal::XMLElement element) const {
    updateXMLElement(element);
    for (unsigned part = 0; color_ && part < std::size(colorNames); ++part) {
        element.setAttribute(colorNames[part], std::to_string(*color_ >> (16 - 8 * part) & 0xFF));
    }
}

ZALRekordboxCuePoint ZALRekordboxCuePoint::copyAsStored() const {
    ZALRekordboxCuePoint copy = *this;
    copy.name_ = zal::textForXML(name_);
    // The shortest text reads back as the same number; what is none becomes 0.
    copy.start_ = std::isfinite(start_) ? start_ : 0;
    copy.end_ = type_ == typeLoop && std::isfinite(end_) ? end_ : 0;
    return copy;
}
