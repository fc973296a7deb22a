#pragma once

#include <tiostream.h>

namespace zal {

/// True when the stream holds an MPEG audio frame: a valid header whose frame lies within the file, followed
/// by another header of the same kind or the end of the file. Only the first mebibyte is searched for the
/// header.
bool holdsMPEGFrame(TagLib::IOStream& stream);

/// True when a frame that TagLib, too, takes for one begins before a position, within that mebibyte.
bool hasMPEGFrameBefore(TagLib::IOStream& stream, long end);

}  // namespace zal
