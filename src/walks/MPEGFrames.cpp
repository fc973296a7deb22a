#include "walks/MPEGFrames.h"

#include "base/Limits.h"
#include "taglib/TagLibStream.h"

#include <algorithm>
#include <cstdint>

namespace zal {

namespace {

// kbit/s by row: MPEG 1 layers I, II, III; MPEG 2 and 2.5 layer I; their layers II and III.
constexpr int bitrates[5][15] = {
    {0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448},
    {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384},
    {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320},
    {0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256},
    {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160},
};
constexpr int sampleRates[3] = {44100, 48000, 32000};

MPEGFrame headerFrom(const TagLib::ByteVector& bytes, unsigned at) {
    if (at + 4 > bytes.size()) return {};
    const std::uint32_t word = bytes.toUInt(at, true);
    const unsigned version = (word >> 19) & 3;  // 0: 2.5, 2: 2, 3: 1
    const unsigned layer = 4 - ((word >> 17) & 3);
    const unsigned bitrate = (word >> 12) & 15;
    const unsigned rate = (word >> 10) & 3;
    const bool invalid =
        (word >> 21) != 0x7FF || version == 1 || layer == 4 || bitrate == 0 || bitrate == 15 || rate == 3;
    if (invalid) return {};
    const unsigned row = version == 3 ? layer - 1 : layer == 1 ? 3 : 4;
    const int bitsPerSecond = bitrates[row][bitrate] * 1000;
    const int samplesPerSecond = sampleRates[rate] / (version == 3 ? 1 : version == 2 ? 2 : 4);
    const int padding = static_cast<int>((word >> 9) & 1);
    MPEGFrame header;
    header.kind = word & 0xFFFE0C00;
    header.isVersion1 = version == 3;
    header.layer = layer;
    header.isMono = ((word >> 6) & 3) == 3;
    header.sampleRate = samplesPerSecond;
    const int slots = layer == 3 && version != 3 ? 72 : 144;
    const int length = layer == 1 ? (12 * bitsPerSecond / samplesPerSecond + padding) * 4
                                  : slots * bitsPerSecond / samplesPerSecond + padding;
    header.length = static_cast<std::uint64_t>(length);
    return header;
}

bool isFrameAt(TagLib::IOStream& stream, const MPEGFrame& header, long position) {
    if (header.length == 0) return false;
    const long end = position + static_cast<long>(header.length);
    if (end >= stream.length()) return end == stream.length();
    stream.seek(end);
    return headerFrom(stream.readBlock(4), 0).kind == header.kind;
}

// TagLib reckons lengths in layer I in another way, and takes no frame without another one behind it.
bool isFrameForTagLib(TagLib::IOStream& stream, const MPEGFrame& header, long position) {
    const bool isLayerI = ((header.kind >> 17) & 3) == 3;
    return !isLayerI && position + static_cast<long>(header.length) + 4 <= stream.length() &&
           isFrameAt(stream, header, position);
}

}  // namespace

bool holdsMPEGFrame(TagLib::IOStream& stream) {
    stream.seek(0);
    const TagLib::ByteVector start = stream.readBlock(limits::mpegSearch);
    for (unsigned at = 0; at + 4 <= start.size(); ++at) {
        if (static_cast<std::uint8_t>(start.data()[at]) != 0xFF) continue;
        const MPEGFrame header = headerFrom(start, at);
        if (isFrameAt(stream, header, at)) return true;
    }
    return false;
}

std::optional<MPEGFrame> firstMPEGFrame(TagLibStream& stream, std::uint64_t from) {
    constexpr std::uint64_t usual = 4096;  // most begin right there
    for (const std::uint64_t reach : {usual, static_cast<std::uint64_t>(limits::mpegSearch)}) {
        const TagLib::ByteVector start = stream.bytesAt(from, reach);
        for (unsigned at = 0; at + MPEGFrame::headerSize <= start.size(); ++at) {
            if (static_cast<std::uint8_t>(start.data()[at]) != 0xFF) continue;
            MPEGFrame frame = headerFrom(start, at);
            frame.position = from + at;
            if (isFrameAt(stream, frame, static_cast<long>(frame.position))) return frame;
        }
    }
    return std::nullopt;
}

bool hasMPEGFrameBefore(TagLib::IOStream& stream, long end) {
    stream.seek(0);
    const TagLib::ByteVector start =
        stream.readBlock(static_cast<unsigned long>(std::min(end + 3, limits::mpegSearch)));
    for (unsigned at = 0; at + 4 <= start.size(); ++at) {
        if (static_cast<std::uint8_t>(start.data()[at]) != 0xFF) continue;
        if (isFrameForTagLib(stream, headerFrom(start, at), at)) return true;
    }
    return false;
}

}  // namespace zal
