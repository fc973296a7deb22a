#pragma once

#include "id3/TagLibStream.h"

#include <aifffile.h>
#include <mpegfile.h>

#include <memory>
#include <string>

// TagLib's files of the ID3 family, opened and written with the checks that TagLib does not make. None reads
// audio properties.

namespace zal {

/// The stream's file as an MP3; null when it is none, and when TagLib must not see it.
std::unique_ptr<TagLib::MPEG::File> mpegFile(TagLibStream& stream);

/// Has TagLib write and strip tags in the stream. False, with one log line, when the lengths in the file's
/// tags are wrong, so that audio would be lost with them, and when the ID3v2 tag would be longer than its
/// length can say.
bool writeMP3File(TagLib::MPEG::File& file, TagLibStream& stream, const std::string& path, int tags,
                  TagLib::File::StripTags strip,
                  TagLib::File::DuplicateTags duplicate = TagLib::File::Duplicate);

/// The stream's file as an AIFF or AIFF-C form; null as above.
std::unique_ptr<TagLib::RIFF::AIFF::File> aiffFile(TagLibStream& stream);

}  // namespace zal
