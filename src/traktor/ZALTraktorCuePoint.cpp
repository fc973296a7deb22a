#include <zaltag/traktor/ZALTraktorCuePoint.h>

#include "base/Description.h"
#include "base/Numbers.h"
#include "base/Unicode.h"
#include "collection/CueNumbers.h"
#include "collection/XML.h"
#include "platform/Log.h"
#include "records/RecordHash.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>

namespace {

constexpr const char* elementName = "CUE_V2";
constexpr const char* typeNames[] = {"Cue", "FadeIn", "FadeOut", "Load", "Grid", "Loop"};

// What is no number becomes 0.
std::string milliseconds(double seconds) {
    const double value = seconds * 1000;
    return fmt::format("{:.6f}", std::isfinite(value) ? value : 0.0);
}

// True for a text that milliseconds() makes of the time that is read from it: of no more digits than a number
// holds, six of them behind the point.
bool isFormatted(std::string_view text) {
    constexpr std::size_t fraction = 7;
    if (text.size() <= fraction || text.size() > 16) return false;
    const std::size_t point = text.size() - fraction;
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    return text[point] == '.' && (text[0] != '0' || point == 1) &&
           std::all_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(point), isDigit) &&
           std::all_of(text.begin() + static_cast<std::ptrdiff_t>(point) + 1, text.end(), isDigit);
}

// A number below 100 as it is printed.
bool isPlainNumber(std::string_view text) {
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    return !text.empty() && text.size() <= 2 && (text[0] != '0' || text.size() == 1) &&
           std::all_of(text.begin(), text.end(), isDigit);
}

double seconds(std::string_view milliseconds) {
    return zal::doubleValue(milliseconds) / 1000;
}

bool isCue(const zal::XMLElement& element) {
    return element.name() == elementName || zal::asciiLowercase(element.name()) == "cue_v2";
}

std::string_view textOf(const zal::XMLElement& element, const char* attribute) {
    const char* const text = element.attribute(attribute);
    return text == nullptr ? std::string_view() : std::string_view(text);
}

// A save writes every cue, nearly all of them as they are.
void setTime(zal::XMLElement element, const char* attribute, double time) {
    const std::string_view text = textOf(element, attribute);
    if (!isFormatted(text) || seconds(text) != time)
        element.setExistingAttribute(attribute, milliseconds(time));
}

std::int64_t integerOf(const zal::XMLElement& element, const char* attribute) {
    return zal::integerValue(textOf(element, attribute));
}

// "#RRGGBB"; null for anything else.
std::optional<std::uint32_t> colorOf(std::string_view text) {
    if (text.size() != 7 || text[0] != '#') return std::nullopt;
    std::uint32_t color = 0;
    const auto [end, error] = std::from_chars(text.data() + 1, text.data() + text.size(), color, 16);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return color;
}

// The types of the kinds, in their order.
constexpr std::int64_t typesOfKinds[] = {ZALTraktorCuePoint::typeCue, ZALTraktorCuePoint::typeFadeIn,
                                         ZALTraktorCuePoint::typeFadeOut, ZALTraktorCuePoint::typeLoad};
constexpr std::int64_t mostSlots = 1000;  // nobody has as many

}  // namespace

ZALTraktorCuePoint::ZALTraktorCuePoint(const ZALTagCuePoint& cuePoint, std::int64_t index)
    : name_(cuePoint.name().value_or("")),
      startTime_(cuePoint.time()),
      index_(index),
      slot_(index),
      color_(cuePoint.color()) {
    const auto kind = static_cast<std::size_t>(cuePoint.kind());
    if (cuePoint.isLoop()) {
        type_ = typeLoop;
        length_ = *cuePoint.end() - startTime_;
    } else if (kind < std::size(typesOfKinds)) {
        type_ = typesOfKinds[kind];
    }
}

ZALTagCuePoint ZALTraktorCuePoint::cuePoint() const {
    ZALTagCuePoint point(startTime_, name_);
    const auto kind = std::find(std::begin(typesOfKinds), std::end(typesOfKinds), type_);
    if (kind != std::end(typesOfKinds))
        point.setKind(static_cast<ZALTagCuePoint::Kind>(kind - std::begin(typesOfKinds)));
    if (type_ == typeLoop) point.setEnd(endTime());
    point.setColor(color_);
    point.setPad(static_cast<int>(std::clamp<std::int64_t>(slot_, ZALTagCuePoint::noPad, mostSlots)));
    return point;
}

ZALNullableString ZALTraktorCuePoint::typeName() const {
    return zal::nameOfType(typeNames, type_);
}

bool ZALTraktorCuePoint::isGrid() const {
    return type_ == typeGrid;
}

std::int64_t ZALTraktorCuePoint::index() const {
    return isGrid() ? -1 : index_;
}

bool ZALTraktorCuePoint::isEqualToTraktorCuePoint(const ZALTraktorCuePoint& other) const {
    using zal::microseconds;
    if (type_ != other.type_ || index() != other.index()) return false;
    if (microseconds(startTime_) != microseconds(other.startTime_)) return false;
    return microseconds(length_) == microseconds(other.length_) && name_ == other.name_;
}

bool ZALTraktorCuePoint::isSameMark(const ZALTraktorCuePoint& other) const {
    return type_ == other.type_ && zal::microseconds(startTime_) == zal::microseconds(other.startTime_) &&
           name_ == other.name_ && (!color_ || color_ == other.color_) &&
           (type_ != typeLoop || zal::microseconds(length_) == zal::microseconds(other.length_));
}

std::size_t ZALTraktorCuePoint::hash() const {
    return zal::formattedHash("{}-{}-{}-{}-{}", name_, type_, zal::microseconds(startTime_),
                              zal::microseconds(length_), index());
}

std::string ZALTraktorCuePoint::description() const {
    return fmt::format("{} - {} (i:{} s: {:.6f} l: {:.6f} t: {})",
                       zal::defaultDescription("ZALTraktorCuePoint", this), name_, index(), startTime_,
                       length_, zal::describe(typeName()));
}

std::optional<ZALTraktorCuePoint> ZALTraktorCuePoint::initWithXMLElement(const zal::XMLElement& element) {
    if (!isCue(element)) return std::nullopt;
    ZALTraktorCuePoint cue;
    cue.name_ = textOf(element, "NAME");
    cue.type_ = integerOf(element, "TYPE");
    cue.startTime_ = seconds(textOf(element, "START"));
    cue.length_ = seconds(textOf(element, "LEN"));
    cue.index_ = cue.slot_ = integerOf(element, "HOTCUE");
    cue.color_ = colorOf(textOf(element, "COLOR"));
    cue.areTimesStored_ = isFormatted(textOf(element, "START")) && isFormatted(textOf(element, "LEN"));
    return cue;
}

std::optional<std::int64_t> ZALTraktorCuePoint::orderOfXMLElement(const zal::XMLElement& element) {
    if (!isCue(element)) return std::nullopt;
    return integerOf(element, "TYPE") == typeGrid ? -1 : integerOf(element, "HOTCUE");
}

// Most are, and are not read as numbers then.
bool ZALTraktorCuePoint::isUpToDate(const zal::XMLElement& element) {
    const auto isTime = [&element](const char* attribute) {
        const char* const text = element.attribute(attribute);
        return text == nullptr || isFormatted(text);
    };
    const std::string_view hotcue = textOf(element, "HOTCUE");
    const bool isGridMark = integerOf(element, "TYPE") == typeGrid;
    return isPlainNumber(textOf(element, "TYPE")) && isPlainNumber(hotcue) &&
           (!isGridMark || hotcue == "0") && isTime("START") && isTime("LEN");
}

void ZALTraktorCuePoint::updateXMLElement(zal::XMLElement element) const {
    element.setExistingAttribute("NAME", name_);
    element.setExistingAttribute("TYPE", std::to_string(type_));
    setTime(element, "START", startTime_);
    setTime(element, "LEN", length_);
    element.setExistingAttribute("HOTCUE", std::to_string(std::max<std::int64_t>(index(), 0)));
}

zal::XMLElement ZALTraktorCuePoint::xmlElement(zal::XMLElement parent) const {
    const zal::XMLElement element = parent.appendChild(elementName);
    writeTo(element);
    return element;
}

void ZALTraktorCuePoint::writeTo(zal::XMLElement element) const {
    if (!name_.empty()) element.setAttribute("NAME", name_);
    element.setAttribute("DISPL_ORDER", "0");
    element.setAttribute("TYPE", std::to_string(type_));
    element.setAttribute("START", milliseconds(startTime_));
    element.setAttribute("LEN", milliseconds(length_));
    element.setAttribute("REPEATS", "-1");
    element.setAttribute("HOTCUE", std::to_string(isOffPads_ ? noSlot : std::max<std::int64_t>(index(), 0)));
    if (color_) element.setAttribute("COLOR", fmt::format("#{:06X}", *color_));
}

ZALTraktorCuePoint ZALTraktorCuePoint::copyAsStored() const {
    ZALTraktorCuePoint copy = *this;
    copy.name_ = zal::textForXML(name_);
    if (!areTimesStored_) {
        copy.startTime_ = seconds(milliseconds(startTime_));
        copy.length_ = length_ == 0 ? 0 : seconds(milliseconds(length_));
    }
    if (!isOffPads_) copy.index_ = std::max<std::int64_t>(index(), 0);
    return copy;
}
