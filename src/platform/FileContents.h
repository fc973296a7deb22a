#pragma once

#include <zaltag/base/ZALData.h>

#include <cstddef>
#include <string>
#include <system_error>

namespace zal {

/// The bytes of a regular file, over the host's file system. Empty, with an error, when it cannot be read;
/// one longer than `sizeMax` is an error (EFBIG).
ZALData fileContents(const std::string& path, std::size_t sizeMax, std::error_code& error);

}  // namespace zal
