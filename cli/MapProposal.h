#pragma once

#include "Collections.h"

#include <string>
#include <vector>

/// What to try with --map where no path was found in a collection: its folders beside those of the paths, as
/// far as file names say that they are the same. Empty when nothing is known.
std::string proposedMaps(const Collection& collection, const std::vector<std::string>& paths);
