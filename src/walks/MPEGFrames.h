#pragma once

#include <tiostream.h>

#include <cstddef>
#include <cstdint>
#include <optional>

namespace zal {

class TagLibStream;

/// An MPEG audio frame as its header has it.
struct MPEGFrame {
    static constexpr std::size_t headerSize = 4;

    std::uint32_t kind = 0;      ///< the bits of the header that stay the same from frame to frame
    std::uint64_t position = 0;  ///< in the file
    std::uint64_t length = 0;    ///< in bytes; 0 for no valid header
    bool isVersion1 = false;     ///< else 2 or 2.5
    unsigned layer = 0;
    bool isMono = false;
    int sampleRate = 0;

    /// In seconds.
    double duration() const {
        const int samples = layer == 1 ? 384 : layer == 3 && !isVersion1 ? 576 : 1152;
        return static_cast<double>(samples) / sampleRate;
    }
    /// How many bytes of side information follow the header in layer III.
    std::size_t sideInformation() const { return isVersion1 ? (isMono ? 17 : 32) : isMono ? 9 : 17; }
};

/// The first frame at or behind a place, as holdsMPEGFrame() looks for one; none within a mebibyte.
std::optional<MPEGFrame> firstMPEGFrame(TagLibStream& stream, std::uint64_t from);

/// True when the stream holds an MPEG audio frame: a valid header whose frame lies within the file, followed
/// by another header of the same kind or the end of the file. Only the first mebibyte is searched for the
/// header.
bool holdsMPEGFrame(TagLib::IOStream& stream);

/// True when a frame that TagLib, too, takes for one begins before a position, within that mebibyte.
bool hasMPEGFrameBefore(TagLib::IOStream& stream, long end);

}  // namespace zal
