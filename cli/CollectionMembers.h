#pragma once

#include "Output.h"

#include <zaltag/rekordbox/ZALRekordboxTrack.h>
#include <zaltag/traktor/ZALTraktorTrack.h>

/// What of a track is printed beside its path, its number and its cues.
struct TrackParts {
    bool beats = false;
    bool attributes = false;
};

/// A track of a collection with its cues and, where asked for, its beats.
Members membersOf(const ZALRekordboxTrack& track, const TrackParts& parts);
Members membersOf(const ZALTraktorTrack& track, const TrackParts& parts);
