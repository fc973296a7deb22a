#pragma once

#include "Output.h"

#include <zaltag/tag/ZALTag.h>

#include <string>

/// Cue points as an array of { "time", "name" }.
ZALJSONValue jsonOfCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints);

/// All comments of a tag as an array of their fields.
ZALJSONValue jsonOfComments(const ZALTag& tag);

/// Everything a tag object tells, under the names of its properties. Absent is null, never left out.
Members membersOfTag(const std::string& path, const ZALTag& tag);
