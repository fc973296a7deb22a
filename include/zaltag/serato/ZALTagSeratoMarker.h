#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALExport.h>
#include <zaltag/serato/ZALTagSeratoCuePoint.h>
#include <zaltag/serato/ZALTagSeratoLoop.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// Serato's record "Serato Markers2": hot cues, loops, and entries such as track colour and BPM lock, which
/// are carried through byte for byte. A value; copy it freely, use one copy from one thread at a time. One
/// record logs each kind of complaint once, however often it gives cause.
class ZALTAG_EXPORT ZALTagSeratoMarker {
  public:
    /// Version 0.0, no cue and nothing to carry.
    ZALTagSeratoMarker() = default;

    /// Reads the raw record: two version bytes and the base64 text of the payload. A cue whose size runs past
    /// the end is logged and ends the list. Null, with one log line, for fewer than 7 bytes or when the
    /// memory for decoding cannot be had. Throws std::out_of_range when the text decodes to fewer than two
    /// bytes: callers that read files catch it.
    static std::optional<ZALTagSeratoMarker> markerWithData(ZALDataView data);
    static std::optional<ZALTagSeratoMarker> initWithData(ZALDataView data) { return markerWithData(data); }

    /// Reads the form of text carriers: base64 of a 42-byte header, which is not compared, and the raw
    /// record. Null, with one log line, when there is no whole header; else null and throws as
    /// markerWithData().
    static std::optional<ZALTagSeratoMarker> markerWithEncodedData(ZALDataView data);
    static std::optional<ZALTagSeratoMarker> initWithEncodedData(ZALDataView data) {
        return markerWithEncodedData(data);
    }

    /// The raw record: the first eight cues in their order in the list, then the first eight loops, then
    /// everything else of the record read, in its old order. Loops that are those that were read stay where
    /// they stood. When a cue of the record read runs past the end, this is logged
    /// and nothing of that record is carried. Null, with one log line, when the memory cannot be had.
    ZALNullableData markerData() const;

    /// The form of text carriers. Null when markerData() is, or, with one log line, when the memory cannot be
    /// had.
    ZALNullableData encodedMarkerData() const;

    /// The version bytes.
    std::uint8_t major() const { return major_; }
    void setMajor(std::uint8_t version) { major_ = version; }
    std::uint8_t minor() const { return minor_; }
    void setMinor(std::uint8_t version) { minor_ = version; }

    /// The cues in the order found; more than eight can be read or set, eight are written.
    const std::vector<ZALTagSeratoCuePoint>& cuePoints() const { return cuePoints_; }
    void setCuePoints(std::vector<ZALTagSeratoCuePoint> cuePoints) { cuePoints_ = std::move(cuePoints); }

    /// The loops in the order found; their slots are their own. Loops that stand behind an entry that is none
    /// are not found.
    const std::vector<ZALTagSeratoLoop>& loops() const { return loops_; }
    void setLoops(std::vector<ZALTagSeratoLoop> loops);

    /// "<ZALTagSeratoMarker: 0x...> major: 1, minor: 1, cuePoints: (...)", with the description of each cue.
    std::string description() const;

    /// Equal versions, cues, loops and carried bytes.
    bool operator==(const ZALTagSeratoMarker& other) const = default;

  private:
    ZALTAG_INSIDE void readCuePoints();
    ZALTAG_INSIDE void readLoops();

    std::uint8_t major_ = 0;
    std::uint8_t minor_ = 0;
    std::vector<ZALTagSeratoCuePoint> cuePoints_;
    std::vector<ZALTagSeratoLoop> loops_;
    bool areLoopsSet_ = false;
    // The payload as it was read, without its two version bytes; null when none was read.
    ZALNullableData sourceMarkerData_;
};
