#pragma once

#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALText.h>
#include <zaltag/records/ZALTagCuePoint.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace zal {
class XMLElement;
}

/// A cue, loop or grid marker of a Traktor track. A value; copy it freely.
class ZALTAG_EXPORT ZALTraktorCuePoint {
  public:
    static constexpr std::int64_t typeCue = 0, typeFadeIn = 1, typeFadeOut = 2, typeLoad = 3, typeGrid = 4,
                                  typeLoop = 5;
    /// The index of a cue that is on no pad.
    static constexpr std::int64_t noSlot = -1;

    ZALTraktorCuePoint() = default;
    /// The cue for a cue point, of its kind and colour; a loop with its length, others without one. The index
    /// is the hot cue's slot.
    ZALTraktorCuePoint(const ZALTagCuePoint& cuePoint, std::int64_t index);
    static ZALTraktorCuePoint traktorCueWithCuePoint(const ZALTagCuePoint& cuePoint, std::int64_t atIndex) {
        return {cuePoint, atIndex};
    }

    /// The label; empty when there is none.
    const std::string& name() const { return name_; }
    void setName(std::string name) { name_ = std::move(name); }
    /// One of the types above, or what the file has.
    std::int64_t type() const { return type_; }
    void setType(std::int64_t type) { type_ = type; }
    /// The word for the type: "Cue", "FadeIn", "FadeOut", "Load", "Grid", "Loop"; null for other numbers.
    ZALNullableString typeName() const;
    /// True for a marker of the beat grid.
    bool isGrid() const;
    /// In seconds; so are the length and the end, which is the start and the length.
    double startTime() const { return startTime_; }
    void setStartTime(double seconds) {
        startTime_ = seconds;
        areTimesStored_ = false;
    }
    double length() const { return length_; }
    void setLength(double seconds) {
        length_ = seconds;
        areTimesStored_ = false;
    }
    double endTime() const { return startTime_ + length_; }
    /// The hot cue's slot from 0 on; noSlot for every grid marker. The file says 0 for what is negative, so a
    /// cue without a slot comes back with slot 0.
    std::int64_t index() const;
    void setIndex(std::int64_t index) {
        index_ = slot_ = index;
        isOffPads_ = false;
    }
    /// The slot as the file has it, also a grid marker's; noSlot for none.
    std::int64_t slot() const { return slot_; }
    /// Makes the file say that it is on no pad.
    void takeOffPads() {
        index_ = slot_ = noSlot;
        isOffPads_ = true;
    }

    /// The colour, 0xRRGGBB; null when there is none, or none that makes sense.
    const std::optional<std::uint32_t>& color() const { return color_; }
    void setColor(std::optional<std::uint32_t> rgb) { color_ = rgb; }

    /// The cue point that this is, with all that the cue says; a grid marker as if it were a cue.
    ZALTagCuePoint cuePoint() const;

    /// Equal type, index and name, and times and lengths that are the same in whole microseconds.
    bool isEqualToTraktorCuePoint(const ZALTraktorCuePoint& other) const;
    bool operator==(const ZALTraktorCuePoint& other) const { return isEqualToTraktorCuePoint(other); }
    /// Made of all that equality looks at.
    std::size_t hash() const;
    /// "<ZALTraktorCuePoint: 0x...> - Drop (i:0 s: 12.500000 l: 0.000000 t: Cue)".
    std::string description() const;

    /// The number that the file has for the cue's place.
    std::int64_t number() const { return isGrid() ? noSlot : index_; }
    /// Equal name and type, and times that are the same in whole microseconds, of loops their lengths, too;
    /// the same colour, where this one has any.
    bool isSameMark(const ZALTraktorCuePoint& other) const;

    // For elements of the document:

    /// Null for an element of another name than CUE_V2, in any case.
    ZALTAG_INSIDE static std::optional<ZALTraktorCuePoint> initWithXMLElement(const zal::XMLElement& element);
    /// What the cues of a track are sorted by: the index. Null when the element is no cue.
    ZALTAG_INSIDE static std::optional<std::int64_t> orderOfXMLElement(const zal::XMLElement& element);
    /// True for an element that updateXMLElement() of its own cue leaves as it is.
    ZALTAG_INSIDE static bool isUpToDate(const zal::XMLElement& element);
    /// Sets the attributes that the element has; others are neither made nor touched.
    ZALTAG_INSIDE void updateXMLElement(zal::XMLElement element) const;
    /// Appends a new element for this cue to a track.
    ZALTAG_INSIDE zal::XMLElement xmlElement(zal::XMLElement parent) const;
    /// Gives a new, empty element all attributes.
    ZALTAG_INSIDE void writeTo(zal::XMLElement element) const;
    /// The cue as it comes back from the file: times in milliseconds with six decimals, no index below 0 but
    /// of what was taken off the pads.
    ZALTraktorCuePoint copyAsStored() const;

  private:
    std::string name_;
    std::int64_t type_ = typeCue;
    double startTime_ = 0;
    double length_ = 0;
    std::int64_t index_ = 0;
    std::int64_t slot_ = 0;
    bool isOffPads_ = false;
    bool areTimesStored_ = false;  // they come back from the file as they are
    std::optional<std::uint32_t> color_;
};
