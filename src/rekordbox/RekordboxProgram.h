#pragma once

#include "collection/CollectionProgram.h"

#include <vector>

namespace zal {

const CollectionProgram& rekordboxProgram();

/// The attributes that tell who wrote a document, and when.
std::vector<XMLAttributeEdit> makersStamp();

}  // namespace zal
