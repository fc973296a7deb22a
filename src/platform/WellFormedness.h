#pragma once

#include <zaltag/platform/ZALFileSystem.h>

#include <atomic>
#include <string>

namespace zal {

/// Reads a file as a stream of XML and says why it is not well-formed, or why its content would not survive
/// being read and written (entities of its own or from elsewhere, elements nested deeper than 1000); empty
/// when all is well. `isRefused` is set as soon as that is known. Throws nothing.
std::string whyNotWellFormed(ZALFileHandle& handle, std::atomic<bool>& isRefused);

}  // namespace zal
