#include <zaltag/records/ZALTagCuePoint.h>

#include "base/Numbers.h"
#include "platform/Log.h"
#include "records/RecordHash.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace {

// NaN compares with nothing; last, it leaves the order a strict one.
bool isEarlier(const ZALTagCuePoint& a, const ZALTagCuePoint& b) {
    return std::isnan(a.time()) ? false : std::isnan(b.time()) || a.time() < b.time();
}

// The beats up to the first that is not later than the one before it: among ascending beats, a walk along
// them for as long as they come closer ends before a repeated one.
std::span<const double> ascendingBeats(const ZALArray<double>& beatTimes) {
    const auto turn = std::adjacent_find(beatTimes.begin(), beatTimes.end(),
                                         [](double beat, double next) { return !(next > beat); });
    return turn == beatTimes.end() ? std::span(beatTimes.elements())
                                   : std::span(beatTimes.begin(), std::next(turn));
}

double nearestBeat(std::span<const double> beats, double time) {
    const auto next = std::lower_bound(beats.begin(), beats.end(), time);
    if (next == beats.begin()) return *next;
    const double previous = *std::prev(next);
    if (next == beats.end()) return previous;
    return std::fabs(time - *next) < std::fabs(time - previous) ? *next : previous;
}

}  // namespace

ZALTagCuePoint ZALTagCuePoint::cuePointWithTime(double time, ZALNullableString name) {
    ZALTagCuePoint made;
    made.setTime(time);
    made.setName(std::move(name));
    return made;
}

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

ZALArray<ZALTagCuePoint> sortedCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints) {
    std::vector<ZALTagCuePoint> sorted = cuePoints.elements();
    std::stable_sort(sorted.begin(), sorted.end(), isEarlier);
    return sorted;
}

ZALArray<ZALTagCuePoint> cuePointsAdjustedToBeatTimes(const ZALArray<ZALTagCuePoint>& cuePoints,
                                                      const ZALArray<double>& beatTimes) {
    if (beatTimes.empty()) return cuePoints;
    const std::span<const double> beats = ascendingBeats(beatTimes);
    std::vector<ZALTagCuePoint> adjusted = cuePoints.elements();
    for (ZALTagCuePoint& cue : adjusted) {
        if (std::isfinite(cue.time() - beats.front())) cue.setTime(nearestBeat(beats, cue.time()));
    }
    return adjusted;
}
