#pragma once

#include <algorithm>
#include <chrono>

namespace zal {

/// A number of seconds that every clock can add: below zero and NaN give 0, too large gives thirty years.
inline std::chrono::nanoseconds boundedDelay(std::chrono::duration<double> delay) {
    constexpr std::chrono::duration<double> longest{1e9};
    if (!(delay.count() > 0)) return {};  // NaN too
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::min(delay, longest));
}

}  // namespace zal
