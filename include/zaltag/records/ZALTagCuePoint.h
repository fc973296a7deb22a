#pragma once

#include <zaltag/base/ZALArray.h>
#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALText.h>

#include <cstddef>
#include <utility>

/// A cue point as every format's cues are told to each other: a time and a name. A value; copy it freely, use
/// one copy from one thread at a time.
class ZALTAG_EXPORT ZALTagCuePoint {
  public:
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

    /// The same cue, or times closer than 0.001 seconds and equal names (two null names are equal).
    bool isEqualToCuePoint(const ZALTagCuePoint& other) const;
    bool operator==(const ZALTagCuePoint& other) const { return isEqualToCuePoint(other); }
    /// Made of the name and the time in milliseconds: equal cues of slightly different times may differ in
    /// it.
    std::size_t hash() const;

    /// "name: Drop, time: 12.5".
    std::string description() const;

  private:
    double time_ = 0;
    ZALNullableString name_;
};

/// The cues by ascending time, as a new array; cues of one time keep their order, and cues whose time is not
/// a number come last.
ZALTAG_EXPORT ZALArray<ZALTagCuePoint> ZALSortedCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints);

/// The cues in their order, each moved to the beat nearest to it. Beat times are in seconds and ascending:
/// the walk along them stops at the first beat that is not closer, so that of two beats equally near the
/// earlier one is taken. A cue that has no finite distance to the first beat keeps its time. An empty beat
/// list gives the very same array object.
ZALTAG_EXPORT ZALArray<ZALTagCuePoint> ZALCuePointsAdjustedToBeatTimes(
    const ZALArray<ZALTagCuePoint>& cuePoints, const ZALArray<double>& beatTimes);

#ifndef ZALTAG_NO_BARE_NAMES
inline ZALArray<ZALTagCuePoint> sortedCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints) {
    return ZALSortedCuePoints(cuePoints);
}
inline ZALArray<ZALTagCuePoint> cuePointsAdjustedToBeatTimes(const ZALArray<ZALTagCuePoint>& cuePoints,
                                                             const ZALArray<double>& beatTimes) {
    return ZALCuePointsAdjustedToBeatTimes(cuePoints, beatTimes);
}
#endif
