#pragma once

#include "Output.h"

#include <zaltag/tag/ZALTag.h>

#include <string>

/// Cue points as an array of { "time", "name" }.
ZALJSONValue jsonOfCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints);

/// All comments of a tag as an array of their fields.
ZALJSONValue jsonOfComments(const ZALTag& tag);

/// All stored pictures of a tag as an array of { "type", "format", "width", "height", "bytes", "mark" }; what
/// does not decode has no format and size.
ZALJSONValue jsonOfPictures(const ZALTag& tag);
/// The same of one picture, as a line with tabs between: type, format, size, bytes, mark; "-" for what it has
/// not.
std::string lineOfPicture(const ZALJSONValue& picture);

/// Everything a tag object tells, under the names of its properties. Absent is null, never left out.
Members membersOfTag(const std::string& path, const ZALTag& tag);
/// Adds every field by the name that all formats share, and what else is in the file.
void addProperties(Members& members, const ZALTag& tag);
