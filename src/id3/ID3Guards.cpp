#include "id3/ID3Guards.h"

#include "base/Limits.h"
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

namespace {

// An APE tag, by its footer in front of an ID3v1 tag or the file's end.
struct APETag {
    long end = 0;     // of the footer
    long length = 0;  // as it says, with the footer
    bool hasHeader = false;
    std::uint32_t items = 0;
};

long endOfAudioAndAPE(IOStream& stream) {
    const long end = stream.length();
    const bool hasID3v1 = end >= trailerSize && read(stream, end - trailerSize, 3) == "TAG";
    return hasID3v1 ? end - trailerSize : end;
}

std::optional<APETag> apeTag(IOStream& stream) {
    const long end = endOfAudioAndAPE(stream);
    const ByteVector footer = read(stream, end - apeSize, apeSize);
    if (end < apeSize || !footer.startsWith("APETAGEX")) return std::nullopt;
    return APETag{end, static_cast<long>(footer.toUInt(12U, false)),
                  (footer.toUInt(20U, false) & hasAPEHeader) != 0, footer.toUInt(16U, false)};
}

// Follows the items as TagLib does, which counts places in 32 bits and splits texts at every NUL.
bool hasFewTexts(const ByteVector& items, std::uint32_t count) {
    const std::string_view bytes(items.data(), items.size());
    std::uint64_t parts = 0;
    std::uint64_t read = 0;
    std::uint32_t at = 0;
    for (; count > 0 && std::uint64_t{at} + 11 <= bytes.size(); --count) {
        const auto keyEnd = bytes.find('\0', at + 8);
        if (keyEnd == bytes.npos) break;
        const std::string_view value = bytes.substr(keyEnd + 1, items.toUInt(at, false));
        const bool isText = (items.toUInt(at + 4, false) & 6) == 0;
        if (isText) parts += static_cast<std::uint64_t>(std::ranges::count(value, '\0'));
        read += keyEnd + 1 - at + value.size();
        if (parts > limits::id3TextParts || read > 2 * bytes.size()) return false;
        at = static_cast<std::uint32_t>(keyEnd + 1 + items.toUInt(at, false));
    }
    return true;
}

}  // namespace

bool isSafeAPE(IOStream& stream) {
    const auto tag = apeTag(stream);
    if (!tag || tag->length <= apeSize || tag->length > tag->end) return true;
    return hasFewTexts(read(stream, tag->end - tag->length, tag->length - apeSize), tag->items);
}

const char* whyNotWritableMP3(IOStream& stream, bool rewritesAPE) {
    const auto ape = apeTag(stream);
    const long audioEnd = endOfAudioAndAPE(stream) - (ape ? apeSize : 0);
    const auto position = positionOfID3v2(stream);
    const long audioBegin = position ? endOfID3v2(stream, *position) : 0;
    if (audioBegin > audioEnd) return "its ID3v2 tag is longer than the room for it";
    if (position && !endsWithItsFooter(stream, *position, audioBegin)) return "its ID3v2 tag has no end";
    if (!ape || !rewritesAPE) return "";
    const long apeBegin = audioEnd - (ape->length - apeSize) - (ape->hasHeader ? apeSize : 0);
    if (ape->length < apeSize || apeBegin < audioBegin) return "the length of its APE tag is wrong";
    const bool beginsRight = !ape->hasHeader || read(stream, apeBegin, 8) == "APETAGEX";
    return beginsRight ? "" : "its APE tag has no beginning";
}

}  // namespace zal
