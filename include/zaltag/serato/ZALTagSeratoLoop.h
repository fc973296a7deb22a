#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALText.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace zal {
class PayloadLog;
}

/// A saved loop of a ZALTagSeratoMarker: one "LOOP" entry of Serato's marker record. Loops have slots of
/// their own beside those of the cues. A value; copy it freely, use one copy from one thread at a time.
class ZALTAG_EXPORT ZALTagSeratoLoop {
  public:
    /// The colour that Serato gives every loop.
    static constexpr std::uint32_t defaultColor = 0x0027AAE1;

    /// The number of loop slots: 8.
    static constexpr int maximumNumberOfLoops() { return 8; }

    /// Slot 0, from 0 to 0 ms, of the default colour, without a label.
    ZALTagSeratoLoop() = default;

    /// Reads one whole entry, header included; the length that the header claims is not looked at. A slot
    /// outside 0 to 7 is logged and becomes 0, a label that is not UTF-8 becomes null. Null, with one log
    /// line, for fewer than 29 bytes.
    static std::optional<ZALTagSeratoLoop> loopWithData(ZALDataView data);

    /// The whole entry as it is written, header included: 30 bytes and the label. Bytes that nothing is known
    /// of are those that were read.
    ZALData loopData() const;

    /// The slot, 0 to 7.
    std::int16_t index() const { return index_; }
    /// Any other slot is logged and leaves the index as it is.
    void setIndex(std::int16_t index);

    /// Milliseconds from the start of the track, of the loop's beginning and end.
    std::uint32_t position() const { return position_; }
    void setPosition(std::uint32_t milliseconds) { position_ = milliseconds; }
    std::uint32_t endPosition() const { return endPosition_; }
    void setEndPosition(std::uint32_t milliseconds) { endPosition_ = milliseconds; }

    /// The colour word, 0xAARRGGBB.
    std::uint32_t color() const { return color_; }
    void setColor(std::uint32_t color) { color_ = color; }

    /// Whether Serato keeps it from being changed.
    bool isLocked() const { return locked_ != 0; }
    void setLocked(bool locked) { locked_ = locked ? 1 : 0; }

    /// The name; null when none was given or the file's is not UTF-8.
    const ZALNullableString& label() const { return label_; }
    void setLabel(ZALNullableString label) { label_ = std::move(label); }

    /// "<ZALTagSeratoLoop: 0x...> index: 0, position: 201165, endPosition: 216791, color: 0027AAE1, locked:
    /// 0, label: Break".
    std::string description() const;

    bool operator==(const ZALTagSeratoLoop& other) const = default;

  private:
    friend class ZALTagSeratoMarker;
    ZALTAG_INSIDE static std::optional<ZALTagSeratoLoop> parse(ZALDataView entry, zal::PayloadLog& log);
    ZALTAG_INSIDE void setIndex(std::int16_t index, zal::PayloadLog& log);

    std::int16_t index_ = 0;
    std::uint32_t position_ = 0;
    std::uint32_t endPosition_ = 0;
    std::uint32_t unknown_ = 0xFFFFFFFF;  // what stands between the end and the colour
    std::uint32_t color_ = defaultColor;
    std::uint8_t unknownFlag_ = 0;
    std::uint8_t locked_ = 0;
    ZALNullableString label_;
};
