#include <zaltag/records/ZALCuePlan.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr double sameTime = 0.001;
constexpr double samePlace = 0.01;
constexpr int pads = 8;

bool isOn(const std::vector<ZALTagCuePoint>& cuePoints, int pad) {
    return std::any_of(cuePoints.begin(), cuePoints.end(),
                       [pad](const ZALTagCuePoint& cue) { return cue.pad() == pad; });
}

int padBeside(const std::vector<ZALTagCuePoint>& cuePoints, int pad) {
    if (pad == ZALTagCuePoint::noPad || !isOn(cuePoints, pad)) return pad;
    for (int free = 0; free < pads; ++free) {
        if (!isOn(cuePoints, free)) return free;
    }
    return ZALTagCuePoint::noPad;
}

}  // namespace

bool ZALCueOutcome::isMoved() const {
    return held && std::fabs(held->time() - asked.time()) >= sameTime;
}

std::size_t ZALCuePlan::count(bool (ZALCueOutcome::*property)() const) const {
    return static_cast<std::size_t>(
        std::count_if(outcomes.begin(), outcomes.end(),
                      [property](const ZALCueOutcome& outcome) { return (outcome.*property)(); }));
}

ZALArray<ZALTagCuePoint> ZALMergedCuePoints(const ZALArray<ZALTagCuePoint>& target,
                                            const ZALArray<ZALTagCuePoint>& source) {
    std::vector<ZALTagCuePoint> merged = target.elements();
    for (const ZALTagCuePoint& cue : source) {
        const auto isHere = [&cue](const ZALTagCuePoint& own) {
            return own.isLoop() == cue.isLoop() && std::fabs(own.time() - cue.time()) <= samePlace;
        };
        if (std::any_of(target.begin(), target.end(), isHere)) continue;
        ZALTagCuePoint added = cue;
        if (cue.pad()) added.setPad(padBeside(merged, *cue.pad()));
        merged.push_back(std::move(added));
    }
    return ZALSortedCuePoints(merged);
}
