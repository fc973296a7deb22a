#pragma once

#include <zaltag/base/ZALArray.h>
#include <zaltag/base/ZALJSONValue.h>
#include <zaltag/records/ZALTagCuePoint.h>

#include <string>
#include <vector>

// Cue points as the commands that carry them print them.

using CuePoints = ZALArray<ZALTagCuePoint>;

/// As an array of { "time", "name", "pad", "color", "end", "kind" }, null for what is not said.
ZALJSONValue jsonOfCues(const CuePoints& cuePoints);

/// One as words: "12.5 "Drop"".
std::string cueText(const ZALTagCuePoint& cue);

/// What becomes of cue points that are asked for, a line for each that changes: those that are new, with
/// where the beat grid moves them, and behind a minus those that go. `asked` is sorted as `after` is.
struct CueChanges {
    std::vector<std::string> lines;
    std::size_t moved = 0;  ///< by the beat grid
};
CueChanges changesOf(const CuePoints& asked, const CuePoints& before, const CuePoints& after);
