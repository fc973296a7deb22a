#pragma once

#include <zaltag/base/ZALText.h>

#include <string_view>

namespace zal {

/// The path that a track's location names: "file://localhost/" or "file:///" begins it, "%XX" is a byte, and
/// every other character, "#", "?" and "+" too, is itself. Null for a location that is no local path, such as
/// a streaming service's, and for bytes that are not UTF-8.
ZALNullableString pathOfLocation(std::string_view location);

}  // namespace zal
