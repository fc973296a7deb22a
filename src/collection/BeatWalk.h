#pragma once

#include <zaltag/collection/ZALCollectionTrack.h>

namespace zal {

/// The beats of a track: from the start of the first segment on by its step; a segment that comes into reach
/// of the next one is left, and the beats go on from the next one's start. Null when a step does not advance
/// the time or there would be more than a million beats.
std::optional<ZALArray<double>> beatTimesOf(const ZALTrackTempo& tempo);

}  // namespace zal
