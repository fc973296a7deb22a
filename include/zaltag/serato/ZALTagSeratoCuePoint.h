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

/// A hot cue of a ZALTagSeratoMarker: one "CUE" entry of Serato's marker record. A value; copy it freely, use
/// one copy from one thread at a time.
class ZALTAG_EXPORT ZALTagSeratoCuePoint {
  public:
    /// The colour of a cue for which none is set.
    static constexpr std::uint32_t colorNotSet = 0x7FFFFFFF;

    /// The number of hot-cue slots: 8.
    static constexpr int maximumNumberOfCuePoints() { return 8; }

    /// Slot 0 at 0 ms, no colour set, no label.
    ZALTagSeratoCuePoint() = default;

    /// A cue in a slot, at a position in milliseconds, with a name that may be null. A slot that setIndex()
    /// refuses leaves 0.
    ZALTagSeratoCuePoint(std::int16_t index, std::uint32_t position, ZALNullableString label);
    static ZALTagSeratoCuePoint cuePointWithIndex(std::int16_t index, std::uint32_t position,
                                                  ZALNullableString label) {
        return {index, position, std::move(label)};
    }
    static ZALTagSeratoCuePoint initWithIndex(std::int16_t index, std::uint32_t position,
                                              ZALNullableString label) {
        return cuePointWithIndex(index, position, std::move(label));
    }

    /// Reads one whole entry, header included; the length that the header claims is not looked at. A slot
    /// outside 0 to 7 is logged and becomes 0, a label that is not UTF-8 becomes null. Null, with one log
    /// line, for fewer than 20 bytes.
    static std::optional<ZALTagSeratoCuePoint> cuePointWithData(ZALDataView data);
    static std::optional<ZALTagSeratoCuePoint> initWithData(ZALDataView data) {
        return cuePointWithData(data);
    }

    /// The whole entry as it is written, header included: 21 bytes and the label. A colour that is not set
    /// is written as the default of the slot, a null label as an empty one.
    ZALData cuePointData() const;

    /// The hot-cue slot, 0 to 7.
    std::int16_t index() const { return index_; }
    /// Any other slot is logged and leaves the index as it is.
    void setIndex(std::int16_t index);

    /// Milliseconds from the start of the track.
    std::uint32_t position() const { return position_; }
    void setPosition(std::uint32_t milliseconds) { position_ = milliseconds; }

    /// The colour word, 0xAARRGGBB, or colorNotSet.
    std::uint32_t color() const { return color_; }
    void setColor(std::uint32_t color) { color_ = color; }
    /// The colour word as eight upper-case hexadecimal digits.
    std::string argbColor() const;

    /// The name; null when none was given or the file's is not UTF-8.
    const ZALNullableString& label() const { return label_; }
    void setLabel(ZALNullableString label) { label_ = std::move(label); }

    /// The body length of the entry: 13 and the bytes of the label.
    std::uint32_t size() const;

    /// "<ZALTagSeratoCuePoint: 0x...> size: 17, index: 0, position: 250, argbColor: 00CC0000, label: Drop".
    std::string description() const;

    bool operator==(const ZALTagSeratoCuePoint& other) const = default;

  private:
    friend class ZALTagSeratoMarker;
    ZALTAG_INSIDE static std::optional<ZALTagSeratoCuePoint> parse(ZALDataView entry, zal::PayloadLog& log);
    ZALTAG_INSIDE void setIndex(std::int16_t index, zal::PayloadLog& log);

    std::int16_t index_ = 0;
    std::uint32_t position_ = 0;
    std::uint32_t color_ = colorNotSet;
    ZALNullableString label_;
};
