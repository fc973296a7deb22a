#pragma once

#include "Output.h"

#include <zaltag/rekordbox/ZALRekordboxTrack.h>
#include <zaltag/traktor/ZALTraktorTrack.h>

/// A track of a collection with its cues and, where asked for, its beats.
Members membersOf(const ZALRekordboxTrack& track, bool withBeats);
Members membersOf(const ZALTraktorTrack& track, bool withBeats);
