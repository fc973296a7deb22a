#pragma once

#include <zaltag/records/ZALTagCuePoint.h>

#include <string>

// Cue points as the user writes them: [PAD:]TIME[-END]=NAME[#RRGGBB].

/// True for what may stand in front of the "=": a pad from A to H and a colon, or nothing; seconds, with
/// minutes and a colon in front or not; the end of a loop behind a dash, or nothing.
bool isCueTime(const std::string& text);

/// The cue point that such a time and a name mean. The name of one that says a pad or an end may say a colour
/// at its end; "##" is a plain "#" there. Throws UsageError for a time before the track, an end that is not
/// behind it, and a name that is not UTF-8.
ZALTagCuePoint cuePointOfWords(const std::string& time, const std::string& name);
