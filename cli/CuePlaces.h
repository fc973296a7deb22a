#pragma once

#include <zaltag/tag/ZALTag.h>

#include <string>
#include <vector>

/// A place in an audio file where cue points stand.
struct CuePlace {
    const char* name;
    ZALArray<ZALTagCuePoint> (*read)(const ZALTag& tag);
    /// The loops that the place keeps beside them.
    ZALArray<ZALTagCuePoint> (*readLoops)(const ZALTag& tag);
    /// Writes the cue points in the order given, moved to the place's beat grid unless their times are kept;
    /// an empty array removes them.
    void (*write)(ZALTag& tag, const ZALArray<ZALTagCuePoint>& cuePoints, bool keepsTimes);
    /// True when a file in which read() found nothing surely has no cue points there, and not some that
    /// cannot be read.
    bool (*isSurelyEmpty)(const ZALTag& tag);
    /// Which of the cue points that were written the place does not hold, as words; empty when it holds all.
    std::string (*missing)(const ZALTag& tag, const ZALArray<ZALTagCuePoint>& cuePoints);
    /// What write() would make of cue points.
    ZALCuePlan (*plan)(const ZALTag& tag, const ZALArray<ZALTagCuePoint>& cuePoints, bool keepsTimes);

    /// The cue points, and the loops behind them.
    ZALArray<ZALTagCuePoint> readAll(const ZALTag& tag) const;
    /// Cue points where write() would put them; loops are cues where the place has none.
    ZALArray<ZALTagCuePoint> asWritten(const ZALTag& tag, const ZALArray<ZALTagCuePoint>& cuePoints,
                                       bool keepsTimes) const;
};

/// The place with a name, or null.
const CuePlace* cuePlace(const std::string& name);

/// The names of all places.
std::vector<std::string> cuePlaceNames();

/// A number of seconds as text: the shortest decimal that reads back the same.
std::string secondsText(double seconds);
