#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALExport.h>

#include <cstdint>
#include <optional>
#include <string>

/// A marker of a ZALTagSeratoGrid. The file has one number for beatsToNext and tempo: a beat count in every
/// marker but the last, a tempo in the last; it is given here in both readings. A value; copy it freely, use
/// one copy from one thread at a time.
class ZALTAG_EXPORT ZALTagSeratoGridPoint {
  public:
    /// All 0.
    ZALTagSeratoGridPoint() = default;

    /// Reads the 8 bytes of a marker. Null, with one log line, for any other length.
    static std::optional<ZALTagSeratoGridPoint> gridPointWithData(ZALDataView data);
    static std::optional<ZALTagSeratoGridPoint> initWithData(ZALDataView data) {
        return gridPointWithData(data);
    }

    /// Always null: grids are read, never written.
    ZALNullableData gridPointData() const { return std::nullopt; }

    /// Seconds from the start of the track; can be negative, and anything in a damaged file.
    float position() const { return position_; }
    void setPosition(float seconds) { position_ = seconds; }

    /// The number of beats up to the next marker.
    std::uint32_t beatsToNext() const { return beatsToNext_; }
    void setBeatsToNext(std::uint32_t count) { beatsToNext_ = count; }

    /// Beats per minute from here to the end.
    float tempo() const { return tempo_; }
    void setTempo(float beatsPerMinute) { tempo_ = beatsPerMinute; }

    /// "<ZALTagSeratoGridPoint: 0x...> position: 0.5, beatsToNext: 1123024896, tempo: 120".
    std::string description() const;

    bool operator==(const ZALTagSeratoGridPoint& other) const = default;

  private:
    float position_ = 0;
    std::uint32_t beatsToNext_ = 0;
    float tempo_ = 0;
};
