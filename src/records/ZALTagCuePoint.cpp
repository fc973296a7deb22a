#include <zaltag/records/ZALTagCuePoint.h>

#include "base/Numbers.h"
#include "platform/Log.h"
#include "records/RecordHash.h"

#include <algorithm>
#include <cmath>

namespace {

// NaN compares with nothing; last, it leaves the order a strict one.
bool isEarlier(const ZALTagCuePoint& a, const ZALTagCuePoint& b) {
    return std::isnan(a.time()) ? false : std::isnan(b.time()) || a.time() < b.time();
}

// Walks along the beats for as long as they come closer, so that a tie keeps the earlier one.
double nearestBeat(const ZALArray<double>& beats, double time) {
    double best = beats[0];
    for (std::size_t j = 1; j < beats.size() && std::fabs(time - beats[j]) < std::fabs(time - best); ++j) {
        best = beats[j];
    }
    return best;
}

}  // namespace

bool ZALTagCuePoint::isEqualToCuePoint(const ZALTagCuePoint& other) const {
    if (this == &other) return true;
    return std::fabs(time_ - other.time_) < 0.001 && name_ == other.name_;
}

std::size_t ZALTagCuePoint::hash() const {
    return zal::formattedHash("{}-{:.3f}", zal::describe(name_), time_);
}

std::string ZALTagCuePoint::description() const {
    return fmt::format("name: {}, time: {}", zal::describe(name_), zal::shortestDecimal(time_));
}

ZALArray<ZALTagCuePoint> ZALSortedCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints) {
    std::vector<ZALTagCuePoint> sorted = cuePoints.elements();
    std::stable_sort(sorted.begin(), sorted.end(), isEarlier);
    return sorted;
}

ZALArray<ZALTagCuePoint> ZALCuePointsAdjustedToBeatTimes(const ZALArray<ZALTagCuePoint>& cuePoints,
                                                         const ZALArray<double>& beatTimes) {
    if (beatTimes.empty()) return cuePoints;
    std::vector<ZALTagCuePoint> adjusted = cuePoints.elements();
    for (ZALTagCuePoint& cue : adjusted) {
        if (std::isfinite(cue.time() - beatTimes[0])) cue.setTime(nearestBeat(beatTimes, cue.time()));
    }
    return adjusted;
}
