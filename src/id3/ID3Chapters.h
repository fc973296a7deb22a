#pragma once

#include <tiostream.h>

namespace zal {

/// False for an ID3v2 tag with more chapters (CHAP and CTOC frames) than TagLib's stack holds, should they
/// stand within one another: it reads nested frames by recursion. False also for one with a compressed
/// chapter, which could hold any number. True when no tag begins at the position. Ask before TagLib sees the
/// tag.
bool chaptersNestSafely(TagLib::IOStream& stream, long position);

/// The same for an MP3 file, wherever its tag is. Reads the whole file when it begins with neither a tag nor
/// an MPEG frame.
bool chaptersOfMP3NestSafely(TagLib::IOStream& stream);

}  // namespace zal
