#pragma once

#include "Output.h"

#include <zaltag/tag/ZALTag.h>

#include <string>

/// Everything a tag object tells, under the names of its properties. Absent is null, never left out.
Members membersOfTag(const std::string& path, const ZALTag& tag);
