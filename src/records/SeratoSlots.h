#pragma once

#include <zaltag/base/ZALArray.h>
#include <zaltag/records/ZALCuePlan.h>
#include <zaltag/records/ZALTagCuePoint.h>
#include <zaltag/serato/ZALTagSeratoGrid.h>
#include <zaltag/serato/ZALTagSeratoMarker.h>
#include <zaltag/serato/ZALTagSeratoMarkerOld.h>

#include <optional>
#include <vector>

// Between Serato's slots and the format-neutral cue points.

namespace zal {

/// The marker's cue points in its order, milliseconds as seconds; empty without a marker.
ZALArray<ZALTagCuePoint> cuePointsOfSeratoMarker(const std::optional<ZALTagSeratoMarker>& marker);
/// Its loops, which are on no pad.
ZALArray<ZALTagCuePoint> loopsOfSeratoMarker(const std::optional<ZALTagSeratoMarker>& marker);

/// The cue points moved to the nearest beats of a grid; as they are without one. A loop, or a cue that says
/// its pad, stays where the marker has it at that time.
ZALArray<ZALTagCuePoint> cuePointsOnSeratoGrid(const ZALArray<ZALTagCuePoint>& cuePoints,
                                               const std::optional<ZALTagSeratoGrid>& grid,
                                               const std::optional<ZALTagSeratoMarker>& marker);

/// Cue points as the slots of Serato's records hold them.
struct SeratoSlots {
    std::optional<std::vector<ZALTagSeratoCuePoint>> cues;  ///< null when those that are there stay
    std::optional<std::vector<ZALTagSeratoLoop>> loops;     ///< the same
    std::vector<ZALCueOutcome> outcomes;                    ///< of the cue points, in their order
};

/// The slots for cue points in the place of those of a marker, or for those of a file without one. Loops take
/// the place of its loops; without any among the cue points these stay.
SeratoSlots seratoSlotsFor(const ZALArray<ZALTagCuePoint>& cuePoints,
                           const std::optional<ZALTagSeratoMarker>& marker);
/// The slots for its loops alone; what is no loop is left out.
SeratoSlots seratoLoopSlotsFor(const ZALArray<ZALTagCuePoint>& loops,
                               const std::optional<ZALTagSeratoMarker>& marker);

/// The marker with these slots, or a new one.
ZALTagSeratoMarker seratoMarkerWithSlots(std::optional<ZALTagSeratoMarker> marker, const SeratoSlots& slots);
ZALTagSeratoMarkerOld oldSeratoMarkerWithSlots(std::optional<ZALTagSeratoMarkerOld> marker,
                                               const SeratoSlots& slots);

}  // namespace zal
