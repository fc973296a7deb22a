#include "id3/ID3Guards.h"

#include "base/Endian.h"
#include "base/Limits.h"
#include "id3/MPEGFrames.h"
#include "id3/TagLibBytes.h"
#include "platform/Inflation.h"

#include <id3v2header.h>
#include <id3v2synchdata.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <set>
#include <string_view>
#include <utility>

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

// Of version 2.3 and of 2.4.
bool isCompressed(ZALDataView header) {
    return (header[9] & 0x88) != 0;
}

bool isChapter(ZALDataView header) {
    return std::memcmp(header.data(), "CHAP", 4) == 0 || std::memcmp(header.data(), "CTOC", 4) == 0;
}

std::uint32_t plainLength(ZALDataView header) {
    return ByteReader(header.subspan(4)).u32be();
}

// As TagLib reads it: an octet of more than 7 bits means that the length is a plain one.
std::uint32_t syncSafeLength(ZALDataView header) {
    return SynchData::toUInt(TagLibBytes(header.subspan(4, 4)));
}

// Neither octet is changed when an unsynchronised frame is decoded.
bool beginsZlibStream(ZALDataView bytes) {
    return bytes.size() >= 2 && (bytes[0] & 0x0F) == 8 && (bytes[0] * 256 + bytes[1]) % 31 == 0;
}

// What the compressed frame at a place inflates; empty when it is none.
ZALDataView streamOf(ZALDataView bytes, std::size_t at) {
    const std::size_t content = at + headerSize + 4;  // behind the length that it says it becomes
    if (content >= bytes.size() || !beginsZlibStream(bytes.subspan(content))) return {};
    return bytes.subspan(content);
}

// Follows the frames of a tag by their lengths, and judges what TagLib would make of them. A length of
// version 2.4 is followed as it should be written and as some programs write it.
class FrameWalk {
  public:
    explicit FrameWalk(ZALDataView frames) : frames_(frames), places_{0} {}

    void startAlsoAt(std::size_t place) { places_.insert(place); }

    bool isSafe() {
        for (unsigned count = 0; !places_.empty(); ++count) {
            const std::size_t at = places_.extract(places_.begin()).value();
            if (at + headerSize > frames_.size()) continue;
            if (count > 2 * limits::id3Frames) return false;
            const ZALDataView header = frames_.subspan(at, headerSize);
            const std::size_t room = frames_.size() - at - headerSize;
            for (const std::size_t length : {plainLength(header), syncSafeLength(header)}) {
                if (length > 0 && length <= room) places_.insert(at + headerSize + length);
            }
            if (isCompressed(header) && !addFrame(frames_, at)) return false;
            if (isChapter(header) && !addChapters(at)) return false;
        }
        return true;
    }

  private:
    // A frame can be unsynchronised: it is counted as its bytes stand, and as they would be meant then.
    bool addFrame(ZALDataView bytes, std::size_t at) {
        const ZALDataView stream = streamOf(bytes, at);
        return stream.empty() || (addStream(stream, false) && addStream(stream, true));
    }

    bool addStream(ZALDataView bytes, bool decode) {
        InflationCount inflation;
        for (bool goesOn = true; goesOn && !bytes.empty() && cost_ <= limits::id3Inflated;) {
            std::size_t length = std::min<std::size_t>(blockSize, bytes.size());
            if (length > 1 && bytes[length - 1] == 0xFF) --length;  // what follows counts
            const ZALDataView block = bytes.first(length);
            bytes = bytes.subspan(length);
            const std::uint64_t before = inflation.made();
            const ByteVector meant = decode ? SynchData::decode(TagLibBytes(block)) : ByteVector();
            goesOn = inflation.take(decode ? viewOf(meant) : block, limits::id3Inflated);
            cost_ += length + inflation.made() - before;
        }
        return cost_ <= limits::id3Inflated;
    }

    // Frames stand in a chapter from where only its class knows, so that every byte may begin one.
    bool addChapters(std::size_t at) {
        if (std::exchange(hasAddedChapters_, true)) return true;
        const ZALDataView bytes = frames_.subspan(at);
        const ByteVector meant = SynchData::decode(TagLibBytes(bytes));
        return addFramesAnywhere(bytes) && addFramesAnywhere(viewOf(meant));
    }

    bool addFramesAnywhere(ZALDataView bytes) {
        int chapters = 0;
        for (std::size_t at = 0; at + headerSize <= bytes.size(); ++at) {
            const ZALDataView header = bytes.subspan(at, headerSize);
            const bool isInflated = isCompressed(header) && !streamOf(bytes, at).empty();
            if (isInflated && !addFrame(bytes, at)) return false;
            if (!isChapter(header) || !fits(header, bytes.size() - at)) continue;
            if (isInflated || ++chapters > limits::id3Chapters) return false;
        }
        return true;
    }

    // Text that happens to read like a chapter's id has no such length behind it. In tags of version 2.3 the
    // length is not sync-safe, and no less than it reads here.
    static bool fits(ZALDataView header, std::size_t remaining) {
        return syncSafeLength(header) <= remaining;
    }

    const ZALDataView frames_;
    std::set<std::size_t> places_;
    bool hasAddedChapters_ = false;
    std::uint64_t cost_ = 0;  // of reading and of inflating
};

bool hasSafeFrames(ZALDataView frames, const Header& header) {
    FrameWalk walk(frames);
    if (header.extendedHeader() && frames.size() >= 4) {
        walk.startAlsoAt(SynchData::toUInt(TagLibBytes(frames.first(4))));
    }
    return walk.isSafe();
}

}  // namespace

bool isSafeID3v2(IOStream& stream, long position) {
    const ByteVector start = tagHeader(stream, position);
    if (start.isEmpty()) return true;
    const long length = endOfID3v2(stream, position) - position;
    if (length > std::numeric_limits<std::uint32_t>::max()) return false;
    const Header header(start);
    if (header.majorVersion() < 3) return true;  // neither chapters nor flags
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
