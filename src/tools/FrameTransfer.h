#pragma once

#include <id3v2tag.h>

namespace zal {

/// Moves the frames of a tag behind those of another one, apart from those that belong to the audio they were
/// written for, and from encrypted ones, which TagLib would write as if they were not. The genre is set
/// instead of moved. `from` is empty afterwards. Gives the number of the encrypted ones.
int transferFrames(TagLib::ID3v2::Tag& from, TagLib::ID3v2::Tag& to);

}  // namespace zal
