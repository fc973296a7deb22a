#include "id3/ID3Guards.h"

#include "base/Limits.h"
#include "id3/MPEGFrames.h"
#include "id3/TagLibBytes.h"
#include "platform/Inflation.h"

#include <id3v2header.h>
#include <id3v2synchdata.h>
#include <tbytevectorstream.h>

#include <algorithm>
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

// Chapters

// Text that happens to read like a chapter's id has no such length behind it. In tags of version 2.3 the
// length is not sync-safe, and no less than it reads here.
bool fits(const ByteVector& header, long remaining) {
    return static_cast<long>(SynchData::toUInt(header.mid(4, 4))) <= remaining;
}

// Of version 2.3 and of 2.4.
bool isCompressed(const ByteVector& header) {
    return (header.at(9) & 0x88) != 0;
}

bool isChapter(const ByteVector& header) {
    return header.startsWith("CHAP") || header.startsWith("CTOC");
}

bool hasFewChapters(IOStream& stream, long position, long end) {
    int count = 0;
    for (; position < end; position += blockSize) {
        const ByteVector block = read(stream, position, blockSize + headerSize - 1);
        const std::string_view bytes(block.data(), block.size());
        for (std::size_t at = bytes.find('C'); at < blockSize; at = bytes.find('C', at + 1)) {
            if (bytes.substr(at, 2) != "CH" && bytes.substr(at, 2) != "CT") continue;
            const ByteVector header = block.mid(static_cast<unsigned>(at), headerSize);
            if (header.size() < headerSize || !isChapter(header)) continue;
            if (!fits(header, end - position - static_cast<long>(at))) continue;
            if (isCompressed(header) || ++count > limits::id3Chapters) return false;
        }
    }
    return true;
}

// Compressed frames

// Follows the frames of a tag by their lengths and adds up what the compressed ones become. A length of
// version 2.4 is followed as it should be written and as some programs write it.
class InflationWalk {
  public:
    InflationWalk(IOStream& stream, long begin, long end) : stream_(stream), end_(end), places_{begin} {}

    void startAlsoAt(long position) { places_.insert(position); }

    bool isModest() {
        for (unsigned count = 0; !places_.empty(); ++count) {
            const long at = places_.extract(places_.begin()).value();
            const ByteVector header = read(stream_, at, headerSize);
            if (at + headerSize > end_ || header.size() < headerSize) continue;
            if (count > 2 * limits::id3Frames) return false;
            for (const unsigned size : {header.toUInt(4U), SynchData::toUInt(header.mid(4, 4))}) {
                const bool hasNext = size > 0 && static_cast<long>(size) <= end_ - at - headerSize;
                if (hasNext) places_.insert(at + headerSize + static_cast<long>(size));
            }
            if (isCompressed(header) && !addFrame(stream_, at)) return false;
            if (isChapter(header) && !addChaptersFrom(at)) return false;
        }
        return true;
    }

  private:
    // A frame can be unsynchronised: it is counted as its bytes stand, and as they would be meant then.
    bool addFrame(IOStream& stream, long at) {
        const long content = at + headerSize + 4;  // behind the length that it says it becomes
        return addStream(stream, content, false) && addStream(stream, content, true);
    }

    bool addStream(IOStream& stream, long at, bool decode) {
        InflationCount inflation;
        for (bool goesOn = true; goesOn && cost_ <= limits::id3Inflated;) {
            ByteVector block = read(stream, at, blockSize);
            if (block.isEmpty()) break;
            if (block.size() > 1 && block.endsWith("\xFF"))
                block.resize(block.size() - 1);  // what follows counts
            at += block.size();
            const std::uint64_t before = inflation.made();
            goesOn = inflation.take(viewOf(decode ? SynchData::decode(block) : block), limits::id3Inflated);
            cost_ += block.size() + inflation.made() - before;
        }
        return cost_ <= limits::id3Inflated;
    }

    // Frames stand in a chapter from where only its class knows, so that every byte may begin one.
    bool addChaptersFrom(long at) {
        if (std::exchange(hasAddedChapters_, true)) return true;
        const ByteVector bytes = read(stream_, at, end_ - at);
        return addFramesAnywhere(bytes) && addFramesAnywhere(SynchData::decode(bytes));
    }

    bool addFramesAnywhere(const ByteVector& bytes) {
        TagLib::ByteVectorStream stream(bytes);
        for (unsigned at = 1; at + headerSize + 6 <= bytes.size(); ++at) {
            const ByteVector header =
                (bytes.data()[at + 9] & 0x88) != 0 ? bytes.mid(at, headerSize + 6) : ByteVector();
            if (header.isEmpty() || !beginsStream(header.mid(headerSize + 4))) continue;
            if (!addFrame(stream, at)) return false;
        }
        return true;
    }

    static bool beginsStream(const ByteVector& bytes) {
        return (bytes[0] & 0x0F) == 8 && bytes.toUShort(0U, true) % 31 == 0;
    }

    IOStream& stream_;
    const long end_;
    bool hasAddedChapters_ = false;
    std::set<long> places_;
    std::uint64_t cost_ = 0;  // of reading and of inflating
};

bool inflatesModestly(IOStream& stream, long begin, long end, const Header& header) {
    InflationWalk walk(stream, begin, end);
    if (header.extendedHeader()) walk.startAlsoAt(begin + SynchData::toUInt(read(stream, begin, 4)));
    return walk.isModest();
}

bool inflatesModestly(IOStream& stream, long begin, long end) {
    const Header header(read(stream, begin - headerSize, headerSize));
    if (header.majorVersion() < 3) return true;  // its frames have no flags
    if (header.majorVersion() > 3 || !header.unsynchronisation())
        return inflatesModestly(stream, begin, end, header);
    TagLib::ByteVectorStream decoded(SynchData::decode(read(stream, begin, end - begin)));
    return inflatesModestly(decoded, 0, decoded.length(), header);
}

}  // namespace

bool isSafeID3v2(IOStream& stream, long position) {
    const ByteVector header = tagHeader(stream, position);
    if (header.isEmpty()) return true;
    const long length = endOfID3v2(stream, position) - position;
    if (length > std::numeric_limits<std::uint32_t>::max()) return false;
    const long end =
        std::min(position + static_cast<long>(Header(header).completeTagSize()), stream.length());
    return hasFewChapters(stream, position, end) && inflatesModestly(stream, position + headerSize, end);
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
