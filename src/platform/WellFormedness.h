#pragma once

#include <zaltag/platform/ZALFileSystem.h>

#include <string>

namespace zal {

/// Reads a file as a stream of XML and says why it is not well-formed, or why its content would not survive
/// being read and written (declared entities, elements nested deeper than 1000); empty when all is well.
/// Throws nothing.
std::string whyNotWellFormed(ZALFileHandle& handle);

}  // namespace zal
