#pragma once

#include <cstdint>

namespace zal {

/// The colour that Serato has for a cue, 0x00RRGGBB: of its eighteen the one that looks most like a colour.
std::uint32_t nearestCueColor(std::uint32_t rgb);

}  // namespace zal
