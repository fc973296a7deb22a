#include "collection/BeatWalk.h"

#include "base/Limits.h"
#include "platform/Log.h"

#include <limits>

namespace zal {

std::optional<ZALArray<double>> beatTimesOf(const ZALTrackTempo& tempo) {
    std::size_t segment = 0;
    const auto nextStart = [&] {
        const bool isLast = segment + 1 == tempo.starts.size();
        return isLast ? std::numeric_limits<double>::max() : tempo.starts[segment + 1];
    };
    std::vector<double> beats;
    double time = tempo.starts[0];
    while (tempo.duration > time) {
        if (beats.size() == limits::beats) {
            logf("a beat grid of more than {} beats is left out", limits::beats);
            return std::nullopt;
        }
        beats.push_back(time);
        const double following = time + tempo.steps[segment];
        if (!(following > time)) return std::nullopt;
        time = following;
        if (time > nextStart() - tempo.margin && segment + 1 < tempo.starts.size()) {
            time = nextStart();
            ++segment;
        }
    }
    return ZALArray<double>(std::move(beats));
}

}  // namespace zal
