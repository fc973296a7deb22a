#pragma once

#include "stores/ID3v2Store.h"

namespace zal {

/// Adds the frames of a tag behind those of another one, byte for byte, apart from those that belong to the
/// audio they were written for, and from encrypted ones, whose key stays behind. The genre takes the place of
/// the other one. Gives the number of the encrypted ones.
int transferFrames(const RawTag& from, ID3v2Store& to);

}  // namespace zal
