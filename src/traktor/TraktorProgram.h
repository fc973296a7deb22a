#pragma once

#include "collection/CollectionProgram.h"

#include <string_view>

namespace zal {

const CollectionProgram& traktorProgram();

/// True for the name of an executable of Traktor.
bool isTraktor(std::string_view programName);

/// The version that a version folder has in its name, which may be a path of several names; empty for what
/// is none. As the pattern "Traktor [0-9]+.?[0-9]*.?[0-9]*" has it, whose points match any character, "/"
/// too.
std::string_view versionOfFolder(std::string_view name);

}  // namespace zal
