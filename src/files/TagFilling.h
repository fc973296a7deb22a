#pragma once

#include "files/MP3File.h"

namespace zal {

/// Fills the ID3v2 tag from the ID3v1 tag: a field that no ID3v2 tag of the file has or had when it was read;
/// texts only when they are ASCII, since nobody knows in which code page others are. For a file that has an
/// ID3v1 tag, which is left as it is. True when there was one.
bool fillFromID3v1(MP3File& file);

}  // namespace zal
