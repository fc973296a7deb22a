#pragma once

#include <zaltag/base/ZALArray.h>
#include <zaltag/base/ZALJSONValue.h>
#include <zaltag/records/ZALCuePlan.h>
#include <zaltag/records/ZALTagCuePoint.h>

#include <string>
#include <vector>

// Cue points as the commands that carry them print them.

using CuePoints = ZALArray<ZALTagCuePoint>;

/// As an array of { "time", "name", "pad", "color", "end", "kind" }, null for what is not said.
ZALJSONValue jsonOfCues(const CuePoints& cuePoints);

/// One as words: "A 12.5-16.5 "Drop" CC0000 load", without what is not said.
std::string cueText(const ZALTagCuePoint& cue);

/// True when both hold the same cue points with all that they say, in the same order.
bool areWhollyEqual(const CuePoints& one, const CuePoints& other);
/// Those that a target has no room for.
CuePoints leftOf(const ZALCuePlan& plan);

/// How many cue points a target holds otherwise than they were asked for.
struct CueLosses {
    CueLosses() = default;
    explicit CueLosses(const ZALCuePlan& plan);
    void add(const CueLosses& more);
    /// "2 left out, 1 on another pad"; empty for none.
    std::string text() const;

    std::size_t leftOut = 0, kinds = 0, pads = 0, colors = 0, gridMarkers = 0;
};

/// What becomes of cue points that are asked for, a line for each that changes: those that are new, with
/// where the beat grid moves them, and behind a minus those that go of those `before`. `kept` stay in any
/// case.
struct CueChanges {
    std::vector<std::string> lines;
    std::size_t moved = 0;  ///< by the beat grid
};
CueChanges changesOf(const ZALCuePlan& plan, const CuePoints& before, const CuePoints& kept);
