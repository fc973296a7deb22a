#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALExport.h>
#include <zaltag/serato/ZALTagSeratoCuePointOld.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Serato's legacy record "Serato Markers_": five cue slots, nine loop slots and a track colour. A file type
/// of "m4a" in any case means the big-endian form, every other one the sync-safe form. A value; copy it
/// freely, use one copy from one thread at a time. One record logs each kind of complaint once, however often
/// it gives cause.
class ZALTAG_EXPORT ZALTagSeratoMarkerOld {
  public:
    /// Version 0.0, no slot in use, white.
    ZALTagSeratoMarkerOld() = default;

    /// Reads the raw record. The cue points get the number of their entry as index; empty slots are dropped.
    /// Entries of neither 19 nor 22 bytes are logged and give a marker without slots; a colour that the
    /// sync-safe form cannot have is logged and stays white. Null, with one log line, for fewer than 10
    /// bytes, for no entry, and when the entries do not share the bytes evenly.
    static std::optional<ZALTagSeratoMarkerOld> initWithData(ZALDataView data, std::string_view fileType);
    /// The same for the file type "mp3".
    static std::optional<ZALTagSeratoMarkerOld> initWithData(ZALDataView data) {
        return initWithData(data, "mp3");
    }
    static std::optional<ZALTagSeratoMarkerOld> markerWithData(ZALDataView data) {
        return initWithData(data);
    }

    /// Reads the form of text carriers: base64 of a 42-byte header, which is not compared, and the raw record
    /// of the file type "m4a". Null, with one log line, when there is no whole header; else null as
    /// initWithData().
    static std::optional<ZALTagSeratoMarkerOld> markerWithEncodedData(ZALDataView data);
    static std::optional<ZALTagSeratoMarkerOld> initWithEncodedData(ZALDataView data) {
        return markerWithEncodedData(data);
    }

    /// True when every colour that would be written fits: always for "m4a"; in the sync-safe form the colours
    /// of the slots that would be written, and the marker's own, must be at most 0x0FFFFFFF. A slot whose
    /// colour is not set is written with its default and fits. Entries in the big-endian form can bring any
    /// colour, so ask this of every marker read from a file before it is rendered.
    bool isRenderableForFileType(std::string_view fileType) const;

    /// The raw record: 318 bytes, or 276 for "m4a". A cue point is written into the slot of its index (0 to
    /// 4; the last of one index wins), then the first nine loops; what is left over are placeholders. A
    /// colour that does not fit is a programming error and aborts: see isRenderableForFileType().
    ZALData markerDataForFileType(std::string_view fileType) const;

    /// The form of text carriers, around markerDataForFileType(). Its header names "Serato Markers2". Null,
    /// with one log line, when the memory cannot be had.
    ZALNullableData encodedMarkerDataForFileType(std::string_view fileType) const;

    /// The version bytes.
    std::uint8_t major() const { return major_; }
    void setMajor(std::uint8_t version) { major_ = version; }
    std::uint8_t minor() const { return minor_; }
    void setMinor(std::uint8_t version) { minor_ = version; }

    /// The cue points in the order found. Loops are not among them.
    const std::vector<ZALTagSeratoCuePointOld>& cuePoints() const { return cuePoints_; }
    void setCuePoints(std::vector<ZALTagSeratoCuePointOld> cuePoints) { cuePoints_ = std::move(cuePoints); }

    /// The loop slots in their order, also those in which no loop is: of the record read, they are kept and
    /// written again.
    const std::vector<ZALTagSeratoCuePointOld>& loopPoints() const { return loopPoints_; }
    void setLoopPoints(std::vector<ZALTagSeratoCuePointOld> loopPoints) {
        loopPoints_ = std::move(loopPoints);
    }

    /// The colour of the track, 0x00RRGGBB; 0x00FFFFFF by default.
    std::uint32_t color() const { return color_; }
    void setColor(std::uint32_t color) { color_ = color; }

    /// "<ZALTagSeratoMarkerOld: 0x...> major: 2, minor: 5, cuePoints: (...)", with the description of each
    /// cue point.
    std::string description() const;

    /// Equal versions, cue points, loops and colour.
    bool operator==(const ZALTagSeratoMarkerOld& other) const = default;

  private:
    ZALTAG_INSIDE void readSlots(ZALDataView entries, std::size_t count, zal::PayloadLog& log);
    ZALTAG_INSIDE void readColor(ZALDataView bytes, bool syncSafe, zal::PayloadLog& log);
    ZALTAG_INSIDE std::vector<ZALTagSeratoCuePointOld> writtenSlots() const;

    std::uint8_t major_ = 0;
    std::uint8_t minor_ = 0;
    std::vector<ZALTagSeratoCuePointOld> cuePoints_;
    std::vector<ZALTagSeratoCuePointOld> loopPoints_;
    std::uint32_t color_ = 0x00FFFFFF;
};
