#pragma once

#include <zaltag/base/ZALText.h>

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace zal {

/// Whole microseconds, halves away from zero, saturated: the precision that cues are compared in.
inline std::int64_t microseconds(double seconds) {
    const double rounded = std::round(seconds * 1e6);
    if (std::isnan(rounded)) return 0;
    constexpr double limit = 9.2e18;
    return rounded > limit ? INT64_MAX : rounded < -limit ? INT64_MIN : static_cast<std::int64_t>(rounded);
}

/// The word for a cue's type; null for a number that has none.
template <std::size_t count>
ZALNullableString nameOfType(const char* const (&names)[count], std::int64_t type) {
    if (type < 0 || type >= static_cast<std::int64_t>(count)) return std::nullopt;
    return names[type];
}

}  // namespace zal
