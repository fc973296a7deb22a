#pragma once

#include <zaltag/base/ZALArray.h>
#include <zaltag/base/ZALExport.h>
#include <zaltag/records/ZALTagCuePoint.h>

#include <cstddef>
#include <optional>
#include <vector>

/// What becomes of one cue point in the place where it is written.
struct ZALTAG_EXPORT ZALCueOutcome {
    ZALTagCuePoint asked;
    /// As it will be read from there; null when the place has no room for it.
    std::optional<ZALTagCuePoint> held;

    bool isLeftOut() const { return !held; }
    /// To the beat grid, or by a millisecond at least in a place that stores whole ones.
    bool isMoved() const;
    /// A loop that ends before it begins becomes a cue; so do the kinds that a program does not know.
    bool hasOtherKind() const { return held && held->kind() != asked.kind(); }
    /// Not on the pad that it says, nor off all pads where it says that. False for what says nothing.
    bool hasOtherPad() const { return held && asked.pad() && held->pad() != asked.pad(); }
    /// Of a palette's nearest colour, or of none. False for what has none.
    bool hasOtherColor() const { return held && asked.color() && held->color() != asked.color(); }
    /// Any of these, but for the time.
    bool isLessThanAsked() const { return isLeftOut() || hasOtherKind() || hasOtherPad() || hasOtherColor(); }
};

/// What becomes of the cue points of a track in the place where they are written: for who says so beforehand.
struct ZALTAG_EXPORT ZALCuePlan {
    /// One for every cue point, in the order in which they were asked for.
    std::vector<ZALCueOutcome> outcomes;
    /// How many markers of Traktor's beat grid leave the pad that they are on, for a cue point that says it.
    std::size_t gridMarkersOffPads = 0;

    /// How many outcomes something holds of.
    std::size_t count(bool (ZALCueOutcome::*property)() const) const;
};

/// The cue points of a target, with those of a source that it lacks: of its own, none of the two kinds that
/// loops and all others make is within 0.01 seconds. Those of the target keep their pads; one that is added
/// goes to the lowest free one of eight where its own is taken, and to none where there is no free one.
/// Sorted by time.
ZALTAG_EXPORT ZALArray<ZALTagCuePoint> ZALMergedCuePoints(const ZALArray<ZALTagCuePoint>& target,
                                                          const ZALArray<ZALTagCuePoint>& source);
