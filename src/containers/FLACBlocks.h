#pragma once

#include <tiostream.h>

namespace zal {

/// The most that the length of a metadata block can say.
inline constexpr unsigned long flacBlockMax = 0xFFFFFF;

/// Walks the metadata blocks of a FLAC file as TagLib is going to, within bounds. False for a file that does
/// not begin with "fLaC", with or without ID3v2 tags in front, for one whose blocks are cut off, and for one
/// that TagLib would exhaust the memory over.
bool canReadFLAC(TagLib::IOStream& stream);

}  // namespace zal
