#pragma once

#include <zaltag/base/ZALData.h>

#include <id3v2header.h>

namespace zal {

/// Follows the frames of an ID3v2 tag the way TagLib does, without making any: false when that would overflow
/// the stack or take more memory than the tag's length justifies. The bytes are those behind the tag's
/// header, decoded when the tag is unsynchronised as a whole (up to version 2.3).
bool hasSafeFrames(ZALDataView frames, const TagLib::ID3v2::Header& header);

}  // namespace zal
