#include "id3/ID3Guards.h"

#include "id3/ID3FrameWalk.h"
#include "id3/MPEGFrames.h"
#include "id3/TagLibBytes.h"

#include <id3v2header.h>
#include <id3v2synchdata.h>

#include <algorithm>
#include <limits>
#include <string_view>

namespace zal {

namespace {

using TagLib::ByteVector;
using TagLib::IOStream;
using TagLib::ID3v2::Header;
namespace SynchData = TagLib::ID3v2::SynchData;

constexpr long blockSize = 1 << 16;
constexpr long headerSize = 10;    // of a tag, and of a frame: id, length, flags
constexpr long trailerSize = 128;  // of an ID3v1 tag
constexpr long apeSize = 32;       // of an APE tag's header or footer
constexpr std::uint32_t hasAPEHeader = 0x80000000;

ByteVector read(IOStream& stream, long position, long length) {
    stream.seek(position);
    return stream.readBlock(static_cast<unsigned long>(std::max(length, 0L)));
}

ByteVector tagHeader(IOStream& stream, long position) {
    const ByteVector bytes = read(stream, position, headerSize);
    return bytes.startsWith("ID3") && bytes.size() == headerSize ? bytes : ByteVector();
}

}  // namespace

bool isSafeID3v2(IOStream& stream, long position) {
    const ByteVector start = tagHeader(stream, position);
    if (start.isEmpty()) return true;
    const long length = endOfID3v2(stream, position) - position;
    if (length > std::numeric_limits<std::uint32_t>::max()) return false;
    const Header header(start);
    // TagLib is handed the same bytes, which its vectors share.
    const ByteVector frames = read(stream, position + headerSize, static_cast<long>(header.tagSize()));
    if (header.majorVersion() > 3 || !header.unsynchronisation())
        return hasSafeFrames(viewOf(frames), header);
    const ByteVector meant = SynchData::decode(frames);
    return hasSafeFrames(viewOf(meant), header);
}

std::optional<long> positionOfID3v2(IOStream& stream) {
    if (read(stream, 0, 3) == "ID3") return 0;
    if (hasMPEGFrameBefore(stream, 1)) return std::nullopt;
    for (long position = 0; position < stream.length(); position += blockSize) {
        const ByteVector block = read(stream, position, blockSize + 2);
        const auto found = std::string_view(block.data(), block.size()).find("ID3");
        if (found == std::string_view::npos) continue;
        const long tag = position + static_cast<long>(found);
        return hasMPEGFrameBefore(stream, tag) ? std::nullopt : std::optional<long>(tag);
    }
    return std::nullopt;
}

long endOfID3v2(IOStream& stream, long position) {
    while (true) {
        const ByteVector header = tagHeader(stream, position);
        if (header.isEmpty()) return position;
        position += static_cast<long>(Header(header).completeTagSize());
    }
}

namespace {

// The last tag of a run ends with its footer, if it has one.
bool endsWithItsFooter(IOStream& stream, long position, long end) {
    const Header header(tagHeader(stream, position));
    return !header.footerPresent() || read(stream, end - headerSize, 3) == "3DI";
}

}  // namespace

const char* whyNotWritableMP3(IOStream& stream, bool rewritesAPE) {
    long audioEnd = stream.length();
    if (audioEnd >= trailerSize && read(stream, audioEnd - trailerSize, 3) == "TAG") audioEnd -= trailerSize;
    const ByteVector ape = read(stream, audioEnd - apeSize, apeSize);
    const bool hasAPE = audioEnd >= apeSize && ape.startsWith("APETAGEX");
    const long apeLength = hasAPE ? static_cast<long>(ape.toUInt(12U, false)) : 0;
    const bool hasHeader = hasAPE && (ape.toUInt(20U, false) & hasAPEHeader) != 0;
    if (hasAPE) audioEnd -= apeSize;

    const auto position = positionOfID3v2(stream);
    const long audioBegin = position ? endOfID3v2(stream, *position) : 0;
    if (audioBegin > audioEnd) return "its ID3v2 tag is longer than the room for it";
    if (position && !endsWithItsFooter(stream, *position, audioBegin)) return "its ID3v2 tag has no end";
    if (!hasAPE || !rewritesAPE) return "";
    const long apeBegin = audioEnd - (apeLength - apeSize) - (hasHeader ? apeSize : 0);
    if (apeLength < apeSize || apeBegin < audioBegin) return "the length of its APE tag is wrong";
    const bool beginsRight = !hasHeader || read(stream, apeBegin, 8) == "APETAGEX";
    return beginsRight ? "" : "its APE tag has no beginning";
}

}  // namespace zal
