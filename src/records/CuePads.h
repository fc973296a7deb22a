#pragma once

#include <zaltag/base/ZALArray.h>
#include <zaltag/records/ZALTagCuePoint.h>

#include <vector>

namespace zal {

/// The pads of a program.
struct PadRules {
    int pads = 8;               ///< that cue points are put on which do not say one, or a taken one
    int mostPads = 8;           ///< that a cue point may say
    bool hasOthers = true;      ///< cues may be on no pad
    bool loadsHavePads = true;  ///< load markers may be on one
};

/// The pad of each cue point, or noPad. When none says anything of pads, they are put on them in their order,
/// as far as numbers go. Otherwise each gets the pad that it says, and of several for one pad a cue or loop
/// before load and fade markers, then the first; the others, and those that say nothing, get the lowest free
/// ones, as long as there are any.
std::vector<int> padsOf(const ZALArray<ZALTagCuePoint>& cuePoints, const PadRules& rules);

/// True when one of the cue points says something of its pad.
bool saysPads(const ZALArray<ZALTagCuePoint>& cuePoints);

}  // namespace zal
