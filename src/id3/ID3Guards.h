#pragma once

#include <tiostream.h>

#include <optional>

// What is asked of an ID3v2 tag before TagLib sees it.

namespace zal {

/// False for a tag that TagLib would overflow its stack or exhaust the memory over: one with chapters too
/// deep within one another, which it reads by recursion, or with a compressed one, which could hold any
/// number; one whose frames say that they hold more than the tag, become too much when they are inflated, or
/// split into too many texts; and one with so many tags behind it that their lengths wrap around in 32 bits.
/// True when no tag begins at the position.
bool isSafeID3v2(TagLib::IOStream& stream, long position);

/// False for an MP3 file whose APE tag would split into too many texts.
bool isSafeAPE(TagLib::IOStream& stream);

/// Where TagLib finds the ID3v2 tag of an MP3 file, if anywhere. Searches the whole file when it begins with
/// neither a tag nor an MPEG frame.
std::optional<long> positionOfID3v2(TagLib::IOStream& stream);

/// The place behind a tag and those that follow it, which TagLib takes for a part of it; the position itself
/// when none begins there. May be far behind the end of the stream.
long endOfID3v2(TagLib::IOStream& stream, long position);

/// Why saving an MP3 file would cost more than its tags, since a length in them is wrong; empty when it would
/// not. `rewritesAPE` tells whether an APE tag is written or removed as well.
const char* whyNotWritableMP3(TagLib::IOStream& stream, bool rewritesAPE);

}  // namespace zal
