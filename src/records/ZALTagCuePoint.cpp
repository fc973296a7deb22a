#include <zaltag/records/ZALTagCuePoint.h>

#include "base/Numbers.h"
#include "platform/Log.h"
#include "records/RecordHash.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr std::array<const char*, 5> kindNames{"cue", "fade-in", "fade-out", "load", "loop"};
constexpr double tolerance = 0.001;

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
    return std::fabs(time_ - other.time_) < tolerance && name_ == other.name_;
}

bool ZALTagCuePoint::isWhollyEqualTo(const ZALTagCuePoint& other) const {
    if (!isEqualToCuePoint(other) || kind_ != other.kind_ || color_ != other.color_ || pad_ != other.pad_)
        return false;
    return end_.has_value() == other.end_.has_value() &&
           (!end_ || std::fabs(*end_ - *other.end_) < tolerance);
}

const char* ZALTagCuePoint::nameOfKind(Kind kind) {
    return kindNames[static_cast<std::size_t>(kind)];
}

std::optional<ZALTagCuePoint::Kind> ZALTagCuePoint::kindOfName(std::string_view name) {
    const auto found = std::find(kindNames.begin(), kindNames.end(), name);
    if (found == kindNames.end()) return std::nullopt;
    return static_cast<Kind>(found - kindNames.begin());
}

void ZALTagCuePoint::setKind(Kind kind) {
    kind_ = kind;
    if (kind != Kind::loop) end_.reset();
}

void ZALTagCuePoint::setEnd(std::optional<double> seconds) {
    end_ = seconds;
    if (seconds) kind_ = Kind::loop;
    if (!seconds && kind_ == Kind::loop) kind_ = Kind::cue;
}

bool ZALTagCuePoint::isLoop() const {
    return end_ && std::isfinite(*end_) && *end_ > time_;
}

void ZALTagCuePoint::setColor(std::optional<std::uint32_t> rgb) {
    color_ = rgb;
    if (rgb) color_ = *rgb & 0xFFFFFFU;
}

void ZALTagCuePoint::setPad(std::optional<int> pad) {
    pad_ = pad;
    if (pad) pad_ = std::max(*pad, noPad);
}

void ZALTagCuePoint::moveTo(double seconds) {
    if (end_) *end_ += seconds - time_;
    time_ = seconds;
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
        if (std::isfinite(cue.time() - beatTimes[0])) cue.moveTo(nearestBeat(beatTimes, cue.time()));
    }
    return adjusted;
}

ZALArray<ZALTagCuePoint> ZALCuePointsMovedBy(const ZALArray<ZALTagCuePoint>& cuePoints, double seconds) {
    if (seconds == 0) return cuePoints;
    std::vector<ZALTagCuePoint> moved = cuePoints.elements();
    for (ZALTagCuePoint& cue : moved) {
        // What would begin before the track keeps where it ends.
        const std::optional<double> end = cue.end() ? std::optional(*cue.end() + seconds) : std::nullopt;
        cue.setTime(std::max(cue.time() + seconds, 0.0));
        if (end) cue.setEnd(end);
    }
    return moved;
}
