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

/// A hot cue or memory cue of a Rekordbox track. A value; copy it freely.
class ZALTAG_EXPORT ZALRekordboxCuePoint {
  public:
    static constexpr std::int64_t typeCue = 0, typeFadeIn = 1, typeFadeOut = 2, typeLoad = 3, typeLoop = 4;
    /// The number of a memory cue.
    static constexpr std::int64_t memoryCue = -1;

    ZALRekordboxCuePoint() = default;
    /// The cue for a cue point, with its colour: a loop, or of the type typeCue, without an end. The index is
    /// the hot cue's slot, or memoryCue.
    ZALRekordboxCuePoint(const ZALTagCuePoint& cuePoint, std::int64_t index);
    static ZALRekordboxCuePoint rekordboxCueWithCuePoint(const ZALTagCuePoint& cuePoint,
                                                         std::int64_t atIndex) {
        return {cuePoint, atIndex};
    }

    /// The label; empty when there is none.
    const std::string& name() const { return name_; }
    void setName(std::string name) { name_ = std::move(name); }
    /// One of the types above, or what the file has.
    std::int64_t type() const { return type_; }
    void setType(std::int64_t type) { type_ = type; }
    /// The word for the type: "Cue", "FadeIn", "FadeOut", "Load", "Loop"; null for other numbers.
    ZALNullableString typeName() const;
    /// In seconds.
    double start() const { return start_; }
    void setStart(double seconds) { start_ = seconds; }
    /// The end of a loop, in seconds; 0 when there is none.
    double end() const { return end_; }
    void setEnd(double seconds) { end_ = seconds; }
    /// The hot cue's slot from 0 on, or memoryCue.
    std::int64_t num() const { return num_; }
    void setNum(std::int64_t num) { num_ = num; }

    /// The colour, 0xRRGGBB; null when there is none, or none that makes sense.
    const std::optional<std::uint32_t>& color() const { return color_; }
    void setColor(std::optional<std::uint32_t> rgb) { color_ = rgb; }

    /// The cue point that this is, with all that the cue says.
    ZALTagCuePoint cuePoint() const;

    /// Equal type, number and name, and times that are the same in whole microseconds. The end counts for
    /// loops only.
    bool isEqualToRekordboxCuePoint(const ZALRekordboxCuePoint& other) const;
    bool operator==(const ZALRekordboxCuePoint& other) const { return isEqualToRekordboxCuePoint(other); }
    /// Made of all five values, the end too: equal cues may differ in it when their ends do, as programs that
    /// stored such hashes expect.
    std::size_t hash() const;
    /// "<ZALRekordboxCuePoint: 0x...> - Drop (i:0 t: 12.500000 t: Cue)". The number is printed without a
    /// sign: that of a memory cue is 2^64 - 1.
    std::string description() const;

    /// The number that the file has for the cue's place.
    std::int64_t number() const { return num_; }
    /// Equal name and type, and times that are the same in whole microseconds; the same colour, where this
    /// one has any.
    bool isSameMark(const ZALRekordboxCuePoint& other) const;

    // For elements of the document:

    /// Null for an element without a start: a placeholder.
    ZALTAG_INSIDE static std::optional<ZALRekordboxCuePoint> initWithXMLElement(
        const zal::XMLElement& element);
    /// What the cues of a track are sorted by; null when the element is no cue.
    ZALTAG_INSIDE static std::optional<std::int64_t> orderOfXMLElement(const zal::XMLElement& element);
    /// Replaces all attributes of an element that was read: colours, and those the library does not know, are
    /// dropped.
    ZALTAG_INSIDE void updateXMLElement(zal::XMLElement element) const;
    /// Appends a new element for this cue to a track. Its attributes have another order than those of an
    /// updated element; both are as the files have them.
    ZALTAG_INSIDE zal::XMLElement xmlElement(zal::XMLElement parent) const;
    /// Fills the new element of a cue that was stored in a track. Storing makes a copy by way of an element
    /// of its own, so this is an update; the colour comes last.
    ZALTAG_INSIDE void writeTo(zal::XMLElement element) const;
    /// The cue as it comes back from the file.
    ZALRekordboxCuePoint copyAsStored() const;

  private:
    std::string name_;
    std::int64_t type_ = typeCue;
    double start_ = 0;
    double end_ = 0;
    std::int64_t num_ = 0;
    std::optional<std::uint32_t> color_;
};
