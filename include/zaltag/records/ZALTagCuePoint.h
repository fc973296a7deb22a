#pragma once

#include <zaltag/base/ZALArray.h>
#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALText.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

/// A cue point as every format's cues are told to each other: a time and a name, and what else may be known
/// of it. What is not said is left to the place where it is written. A value; copy it freely, use one copy
/// from one thread at a time.
class ZALTAG_EXPORT ZALTagCuePoint {
  public:
    enum class Kind : std::uint8_t { cue, fadeIn, fadeOut, load, loop };
    /// The pad of a cue that is on none.
    static constexpr int noPad = -1;

    ZALTagCuePoint() = default;
    ZALTagCuePoint(double seconds, ZALNullableString name) : time_(seconds), name_(std::move(name)) {}
    static ZALTagCuePoint cuePointWithTime(double time, ZALNullableString name) {
        return {time, std::move(name)};
    }
    static ZALTagCuePoint initWithTime(double time, ZALNullableString name) {
        return cuePointWithTime(time, std::move(name));
    }

    /// Seconds from the start of the track; 0 by default.
    double time() const { return time_; }
    void setTime(double seconds) { time_ = seconds; }

    /// The label; null by default.
    const ZALNullableString& name() const { return name_; }
    void setName(ZALNullableString name) { name_ = std::move(name); }

    /// What it does; a cue by default.
    Kind kind() const { return kind_; }
    /// Every kind but a loop drops the end.
    void setKind(Kind kind);
    /// The word for a kind: "cue", "fade-in", "fade-out", "load", "loop".
    static const char* nameOfKind(Kind kind);
    /// The kind of that word; null for others.
    static std::optional<Kind> kindOfName(std::string_view name);

    /// Where a loop ends, in seconds from the start of the track; null by default.
    const std::optional<double>& end() const { return end_; }
    /// What has an end is a loop; without one, a loop becomes a cue.
    void setEnd(std::optional<double> seconds);
    /// True for a loop that ends behind its beginning. One that does not is good for a cue only.
    bool isLoop() const;

    /// The colour, 0xRRGGBB; null, by default, when none is said.
    const std::optional<std::uint32_t>& color() const { return color_; }
    void setColor(std::optional<std::uint32_t> rgb);

    /// The pad that it is on: from 0 on, or noPad. Null, by default, when nothing is said: an array of such
    /// cues is put on the pads in its order.
    const std::optional<int>& pad() const { return pad_; }
    /// Every number below 0 is noPad.
    void setPad(std::optional<int> pad);

    /// Moves it to another time, a loop with its end.
    void moveTo(double seconds);

    /// The same cue, or times closer than 0.001 seconds and equal names (two null names are equal).
    /// Whatever else is said of the two does not count.
    bool isEqualToCuePoint(const ZALTagCuePoint& other) const;
    bool operator==(const ZALTagCuePoint& other) const { return isEqualToCuePoint(other); }
    /// Equal in that way, and of the same kind, colour and pad, with ends closer than 0.001 seconds.
    bool isWhollyEqualTo(const ZALTagCuePoint& other) const;
    /// Made of the name and the time in milliseconds: equal cues of slightly different times may differ in
    /// it.
    std::size_t hash() const;

    /// "name: Drop, time: 12.5".
    std::string description() const;

  private:
    double time_ = 0;
    ZALNullableString name_;
    std::optional<double> end_;
    std::optional<std::uint32_t> color_;
    std::optional<int> pad_;
    Kind kind_ = Kind::cue;
};

/// The cues by ascending time, as a new array; cues of one time keep their order, and cues whose time is not
/// a number come last.
ZALTAG_EXPORT ZALArray<ZALTagCuePoint> ZALSortedCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints);

/// The cues in their order, each moved to the beat nearest to it, a loop by its beginning. Beat times are in
/// seconds and ascending: the walk along them stops at the first beat that is not closer, so that of two
/// beats equally near the earlier one is taken. A cue that has no finite distance to the first beat keeps its
/// time. An empty beat list gives the very same array object.
ZALTAG_EXPORT ZALArray<ZALTagCuePoint> ZALCuePointsAdjustedToBeatTimes(
    const ZALArray<ZALTagCuePoint>& cuePoints, const ZALArray<double>& beatTimes);

/// The cues in their order, each as much later, loops with their ends. None begins before 0 then; by 0
/// seconds it is the very same array object.
ZALTAG_EXPORT ZALArray<ZALTagCuePoint> ZALCuePointsMovedBy(const ZALArray<ZALTagCuePoint>& cuePoints,
                                                           double seconds);

#ifndef ZALTAG_NO_BARE_NAMES
inline ZALArray<ZALTagCuePoint> sortedCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints) {
    return ZALSortedCuePoints(cuePoints);
}
inline ZALArray<ZALTagCuePoint> cuePointsAdjustedToBeatTimes(const ZALArray<ZALTagCuePoint>& cuePoints,
                                                             const ZALArray<double>& beatTimes) {
    return ZALCuePointsAdjustedToBeatTimes(cuePoints, beatTimes);
}
#endif
