#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALExport.h>
#include <zaltag/serato/ZALTagSeratoGridPoint.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// Serato's record "Serato BeatGrid": markers between which the beats lie evenly. Read, never written. A
/// value; copy it freely, use one copy from one thread at a time.
class ZALTAG_EXPORT ZALTagSeratoGrid {
  public:
    /// Version 0.0, no marker.
    ZALTagSeratoGrid() = default;

    /// Reads the raw record; what follows the markers is ignored, and a grid without markers is normal. Null,
    /// with one log line, for fewer than 6 bytes or fewer markers than declared.
    static std::optional<ZALTagSeratoGrid> gridWithData(ZALDataView data);
    static std::optional<ZALTagSeratoGrid> initWithData(ZALDataView data) { return gridWithData(data); }

    /// Reads the form of text carriers: base64 of a 42-byte header, which is not compared, and the raw
    /// record. Null, with one log line, when there is no whole header; else null as gridWithData().
    static std::optional<ZALTagSeratoGrid> gridWithEncodedData(ZALDataView data);
    static std::optional<ZALTagSeratoGrid> initWithEncodedData(ZALDataView data) {
        return gridWithEncodedData(data);
    }

    /// The time of the beat nearest to a time, both in seconds. Beats go on at the last tempo behind the last
    /// marker, and backwards before the first one. The time itself without markers, and where the markers of
    /// a damaged file lead to no finite time; also, with one log line, behind a last marker whose tempo is
    /// not above 0.
    double gridTimeForTime(double time) const;

    /// The version bytes.
    std::uint8_t major() const { return major_; }
    void setMajor(std::uint8_t version) { major_ = version; }
    std::uint8_t minor() const { return minor_; }
    void setMinor(std::uint8_t version) { minor_ = version; }

    /// The markers in the order of the record.
    const std::vector<ZALTagSeratoGridPoint>& gridPoints() const { return gridPoints_; }
    void setGridPoints(std::vector<ZALTagSeratoGridPoint> gridPoints) { gridPoints_ = std::move(gridPoints); }

    /// "<ZALTagSeratoGrid: 0x...> major: 1, minor: 0, gridPoints: (...)", with the description of each
    /// marker.
    std::string description() const;

    bool operator==(const ZALTagSeratoGrid& other) const = default;

  private:
    std::uint8_t major_ = 0;
    std::uint8_t minor_ = 0;
    std::vector<ZALTagSeratoGridPoint> gridPoints_;
};
