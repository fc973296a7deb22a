#pragma once

namespace zal {

class TagLibStream;

/// What TagLib can be trusted with.
enum class MP4Structure {
    refused,   ///< it would not open the file, or would overflow its stack or exhaust the memory over it
    readable,  ///< it reads the file, but a save could harm what is not the tag
    writable,
};

/// Walks the atoms of an MP4 file as TagLib is going to, within bounds. The cost is that of the file's atoms;
/// what they hold is not read.
MP4Structure structureOfMP4(TagLibStream& stream);

}  // namespace zal
