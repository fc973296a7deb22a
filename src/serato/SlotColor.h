#pragma once

#include <zaltag/serato/ZALTagSeratoCuePoint.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace zal {

/// The colour word to write for a slot: its own, or the default of its index among the first `slots` (at
/// most 8), the nearest one when the index is outside.
inline std::uint32_t writtenColor(std::uint32_t color, int index, int slots) {
    static constexpr std::array<std::uint32_t, 8> defaults{0x00CC0000, 0x00CC8800, 0x000000CC, 0x00CCCC00,
                                                           0x0000CC00, 0x00CC00CC, 0x0000CCCC, 0x008800CC};
    if (color != ZALTagSeratoCuePoint::colorNotSet) return color;
    return defaults[static_cast<std::size_t>(std::clamp(index, 0, slots - 1))];
}

}  // namespace zal
