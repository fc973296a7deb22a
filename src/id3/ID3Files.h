#pragma once

#include "id3/TagLibStream.h"

#include <aifffile.h>
#include <mpegfile.h>

#include <memory>

// TagLib's files of the ID3 family, opened with the checks that TagLib does not make. None reads audio
// properties.

namespace zal {

/// The stream's file as an MP3; null when it is none, and when TagLib must not see it.
std::unique_ptr<TagLib::MPEG::File> mpegFile(TagLibStream& stream);

/// The stream's file as an AIFF or AIFF-C form; null as above.
std::unique_ptr<TagLib::RIFF::AIFF::File> aiffFile(TagLibStream& stream);

}  // namespace zal
