#pragma once

#include "taglib/TagLibStream.h"

#include <cstdint>
#include <optional>

// Where the tags of an MP3 file stand.

namespace zal {

inline constexpr std::uint64_t id3v1Length = 128;

/// Where the first ID3v2 tag stands, if anywhere in front of the audio. Searches the whole file when it
/// begins with neither a tag nor an MPEG frame.
std::optional<std::uint64_t> positionOfID3v2(TagLibStream& stream);

/// Where an ID3v2 tag stands that ends with its footer at the end of the file, or in front of other tags
/// there.
std::optional<std::uint64_t> positionOfLastID3v2(TagLibStream& stream);

/// The place behind a tag and those that follow it; the position itself when none begins there. May be far
/// behind the end of the stream.
std::uint64_t endOfID3v2(TagLibStream& stream, std::uint64_t position);

/// The places of the tags that follow one another from a position on, with the zeros that may be between
/// them; no more of them than a real file has.
std::vector<std::uint64_t> positionsOfID3v2(TagLibStream& stream, std::uint64_t position);

/// The place behind the tags that the file begins with: ID3v2, and an APE tag behind it.
std::uint64_t endOfTagsInFront(TagLibStream& stream);

/// Whether an APE tag stands at the end of the file, or in front of an ID3v1 tag there.
bool hasAPETag(TagLibStream& stream);

/// How long TAG+, the longer form of the ID3v1 tag that ends at a place, is in front of it; 0 without one.
std::uint64_t lengthOfEnhancedTag(TagLibStream& stream, std::uint64_t position);

/// Why saving an MP3 file would cost more than its tags, since a length in them is wrong; empty when it would
/// not.
const char* whyNotWritableMP3(TagLibStream& stream);

}  // namespace zal
