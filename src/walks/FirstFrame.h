#pragma once

#include <zaltag/walks/ZALFirstFrame.h>

#include <optional>

namespace zal {

class TagLibStream;

/// The same of an open MP3 file.
std::optional<ZALFirstFrame> firstFrameOf(TagLibStream& stream);

}  // namespace zal
