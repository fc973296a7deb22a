#include "walks/MP3Layout.h"

#include "base/Endian.h"
#include "base/Limits.h"
#include "walks/MPEGFrames.h"
#include "walks/RawFrames.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace zal {

namespace {

constexpr std::uint64_t blockSize = 1 << 16;
constexpr std::uint64_t apeSize = 32;  // of an APE tag's header or footer
constexpr std::uint64_t enhancedSize = 227;
constexpr std::uint32_t hasAPEHeader = 0x80000000;

std::uint64_t lengthOf(TagLibStream& stream) {
    return static_cast<std::uint64_t>(stream.length());
}

bool isAt(TagLibStream& stream, std::uint64_t position, std::string_view mark) {
    std::array<std::uint8_t, 8> bytes{};
    const auto part = std::span(bytes).first(mark.size());
    return stream.readAt(position, part) == mark.size() && std::equal(mark.begin(), mark.end(), part.begin());
}

// The same for what ends at a place.
bool endsAt(TagLibStream& stream, std::uint64_t end, std::uint64_t size, std::string_view mark) {
    return end >= size && isAt(stream, end - size, mark);
}

bool readHeader(TagLibStream& stream, std::uint64_t position, ID3v2Header& header) {
    std::array<std::uint8_t, ID3v2Header::length> bytes{};
    return stream.readAt(position, bytes) == bytes.size() && header.read(bytes);
}

std::uint64_t endBeforeID3v1(TagLibStream& stream) {
    const std::uint64_t end = lengthOf(stream);
    return endsAt(stream, end, id3v1Length, "TAG") ? end - id3v1Length : end;
}

// Where the APE tag that ends at a place begins, as its footer says; the place itself without one.
std::uint64_t beginOfAPE(TagLibStream& stream, std::uint64_t end) {
    if (!endsAt(stream, end, apeSize, "APETAGEX")) return end;
    std::array<std::uint8_t, apeSize> footer{};
    stream.readAt(end - apeSize, footer);
    ByteReader reader{ZALDataView(footer).subspan(12)};
    const std::uint64_t size = reader.u32le();
    reader.skip(4);
    const std::uint64_t whole = size + ((reader.u32le() & hasAPEHeader) != 0 ? apeSize : 0);
    return whole <= end ? end - whole : end;
}

// The tag whose footer ends at a place.
std::optional<std::uint64_t> tagWithFooterAt(TagLibStream& stream, std::uint64_t end) {
    if (!endsAt(stream, end, ID3v2Header::length, "3DI")) return std::nullopt;
    std::array<std::uint8_t, ID3v2Header::length> bytes{};
    stream.readAt(end - bytes.size(), bytes);
    std::copy_n("ID3", 3, bytes.begin());
    ID3v2Header header;
    if (!header.read(bytes) || header.completeSize() > end) return std::nullopt;
    const std::uint64_t position = end - header.completeSize();
    return isAt(stream, position, "ID3") ? std::optional(position) : std::nullopt;
}

}  // namespace

std::optional<std::uint64_t> positionOfID3v2(TagLibStream& stream) {
    if (isAt(stream, 0, "ID3")) return 0;
    if (hasMPEGFrameBefore(stream, 1)) return std::nullopt;
    ZALData block(blockSize + 2);
    ID3v2Header header;
    for (std::uint64_t position = 0; position < lengthOf(stream); position += blockSize) {
        const std::size_t count = stream.readAt(position, block);
        const std::string_view text(reinterpret_cast<const char*>(block.data()), count);
        for (auto at = text.find("ID3"); at != text.npos; at = text.find("ID3", at + 1)) {
            const std::uint64_t tag = position + at;
            if (!readHeader(stream, tag, header)) continue;
            return hasMPEGFrameBefore(stream, static_cast<long>(tag)) ? std::nullopt : std::optional(tag);
        }
    }
    return std::nullopt;
}

std::optional<std::uint64_t> positionOfLastID3v2(TagLibStream& stream) {
    const std::uint64_t behindAPE = endBeforeID3v1(stream);
    const std::uint64_t behindFirst = behindAPE - lengthOfEnhancedTag(stream, behindAPE);
    for (const std::uint64_t end : {behindAPE, behindFirst, beginOfAPE(stream, behindFirst)}) {
        if (const auto position = tagWithFooterAt(stream, end)) return position;
    }
    return std::nullopt;
}

std::uint64_t endOfID3v2(TagLibStream& stream, std::uint64_t position) {
    ID3v2Header header;
    while (readHeader(stream, position, header)) {
        position += header.completeSize();
    }
    return position;
}

std::vector<std::uint64_t> positionsOfID3v2(TagLibStream& stream, std::uint64_t position) {
    constexpr std::size_t tagsMax = 16;
    std::vector<std::uint64_t> positions;
    ID3v2Header header;
    while (positions.size() < tagsMax && readHeader(stream, position, header)) {
        positions.push_back(position);
        position += header.completeSize();
        std::array<std::uint8_t, 4096> block{};
        const std::uint64_t most = position + limits::mpegSearch;
        std::size_t zeros = block.size();
        while (zeros == block.size() && position < most) {
            const std::size_t count = stream.readAt(position, block);
            const std::uint8_t* const begin = block.data();
            const std::uint8_t* const end = begin + count;
            zeros = static_cast<std::size_t>(
                std::find_if(begin, end, [](std::uint8_t byte) { return byte != 0; }) - begin);
            position += zeros;
        }
    }
    return positions;
}

std::uint64_t endOfTagsInFront(TagLibStream& stream) {
    std::uint64_t end = 0;
    const auto first = positionOfID3v2(stream);
    const auto tags = first ? positionsOfID3v2(stream, *first) : std::vector<std::uint64_t>();
    if (!tags.empty()) end = endOfID3v2(stream, tags.back());  // a header may be none that can be read
    if (!isAt(stream, end, "APETAGEX")) return end;
    std::array<std::uint8_t, apeSize> header{};
    stream.readAt(end, header);
    return end + apeSize + ByteReader(ZALDataView(header).subspan(12)).u32le();
}

bool hasAPETag(TagLibStream& stream) {
    return endsAt(stream, endBeforeID3v1(stream), apeSize, "APETAGEX");
}

std::uint64_t lengthOfEnhancedTag(TagLibStream& stream, std::uint64_t position) {
    return endsAt(stream, position, enhancedSize, "TAG+") ? enhancedSize : 0;
}

const char* whyNotWritableMP3(TagLibStream& stream) {
    if (isAt(stream, 0, "RIFF")) return "it is an MP3 file within a RIFF form, whose sizes would be wrong";
    const auto position = positionOfID3v2(stream);
    if (!position) return "";
    const std::uint64_t audioEnd = endBeforeID3v1(stream) - (hasAPETag(stream) ? apeSize : 0);
    ID3v2Header header;
    if (!readHeader(stream, *position, header)) return "its ID3v2 tag has no size";
    const std::uint64_t end = *position + header.completeSize();
    if (end > audioEnd) return "its ID3v2 tag is longer than the room for it";
    if (header.hasFooter && !isAt(stream, end - ID3v2Header::length, "3DI"))
        return "its ID3v2 tag has no end";
    return "";
}

}  // namespace zal
