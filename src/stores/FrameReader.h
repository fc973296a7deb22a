#pragma once

#include "walks/RawFrames.h"

#include <id3v2frame.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace zal {

/// What TagLib makes of a raw frame.
struct ReadFrame {
    std::unique_ptr<TagLib::ID3v2::Frame> frame;  ///< null when TagLib cannot hold it: one that is empty, say
    bool isRenewed = false;  ///< a save writes the frame as TagLib renders it, not as the file has it
    bool isMerged = false;   ///< another frame holds its text now; a save leaves it out
};

/// Whether a save turns numbers of the ID3v1 list in a genre into their names.
enum class GenreNumbers { kept, named };

/// Has TagLib make its frames of the raw ones, one for each. It gets every frame in version 2.4, without
/// flags (what is encrypted becomes an unknown frame), and with texts in an encoding that it can read: UTF-16
/// without a mark in the order that makes sense, Latin-1 where UTF-8 is broken. The dates of version 2.3
/// become one. Frames whose id of version 2.4 is not wanted stay null. False when TagLib must not see them.
bool readFrames(const RawTag& tag, GenreNumbers genres, std::vector<ReadFrame>& frames,
                const std::function<bool(const std::string& id)>& isWanted = nullptr);

}  // namespace zal
