#pragma once

#include "id3/MP3File.h"

namespace zal {

/// Whether no ID3v2 tag of the file has a frame with this id, and none had one when it was read.
bool lacksFrame(const MP3File& file, const char* id);

/// Fills the ID3v2 tag from the ID3v1 tag, but for the comment: a field that it lacks altogether and that
/// nobody took away; texts only when they are ASCII, since nobody knows in which code page others are. For a
/// file that has an ID3v1 tag, which is left as it is. True when there was one.
bool fillFromID3v1(MP3File& file);

}  // namespace zal
