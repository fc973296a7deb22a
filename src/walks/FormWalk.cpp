#include "walks/FormWalk.h"

#include "base/Endian.h"
#include "base/Limits.h"
#include "taglib/TagLibBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

namespace zal {

bool isID3(const FormChunk& chunk) {
    return chunk.is("ID3 ") || chunk.is("id3 ");
}

bool isInfo(TagLibStream& stream, const FormChunk& chunk) {
    return chunk.is("LIST") && chunk.size >= 4 && stream.bytesAt(chunk.content(), 4) == "INFO";
}

namespace {

using TagLib::ByteVector;

constexpr std::uint64_t headSize = 12;
constexpr std::uint64_t chunkHeaderSize = 8;
constexpr std::uint64_t restMax = 4096;                        // of zeros behind the chunks
constexpr std::uint64_t tailSearch = std::uint64_t{16} << 20;  // for tags behind audio without a size

// What TagLib takes for a chunk's id.
bool isID(ZALDataView bytes) {
    return bytes.size() == 4 &&
           std::ranges::all_of(bytes, [](std::uint8_t byte) { return byte >= 32 && byte <= 127; });
}

// A byte behind an odd end is padding when it is 0 or an id follows it; some programs write none.
bool isPadding(ZALDataView byteAndID) {
    return !byteAndID.empty() && (byteAndID.front() == 0 || isID(byteAndID.subspan(1)));
}

bool isTag(const FormChunk& chunk) {
    return isID3(chunk) || chunk.is("LIST") || chunk.is("VCAS");
}

// Goes from chunk to chunk until there is none or its header makes no sense.
class Walker {
  public:
    Walker(TagLibStream& stream, FormKind kind)
        : stream_(stream), kind_(kind), length_(static_cast<std::uint64_t>(stream.length())) {
        formEnd_ = chunkHeaderSize + numberAt(4);
    }

    FormWalk walk() {
        result_.isTooLarge = length_ > std::numeric_limits<std::uint32_t>::max();
        FormChunk chunk;
        while (!result_.isTooLarge && enter(chunk)) {
            const bool isMuch = isTag(chunk) && chunk.size > limits::formTag;
            result_.isTooLarge = result_.chunks.size() == limits::formChunks || isMuch;
            result_.chunks.push_back(chunk);
            moveTo(chunk.end());
            const bool isLastByte = offset_ + 1 == length_ && offset_ + 1 == formEnd_;
            const bool isOdd = chunk.size % 2 != 0;
            if (isOdd && (isLastByte || isPadding(viewOf(stream_.bytesAt(offset_, 5))))) moveTo(offset_ + 1);
        }
        result_.end = offset_;
        result_.damage = damage();
        return result_;
    }

  private:
    std::uint32_t numberAt(std::uint64_t position) {
        std::array<std::uint8_t, 4> bytes{};
        stream_.readAt(position, bytes);
        ByteReader reader(bytes);
        return kind_ == FormKind::wav ? reader.u32le() : reader.u32be();
    }

    // The header at a place. False when there is none.
    bool header(std::uint64_t place, FormChunk& chunk) {
        std::array<std::uint8_t, 4> id{};
        if (place + chunkHeaderSize > length_ || stream_.readAt(place, id) != id.size() || !isID(id))
            return false;
        std::copy(id.begin(), id.end(), chunk.id.begin());
        chunk.place = place;
        chunk.size = numberAt(place + 4);
        return true;
    }

    bool enter(FormChunk& chunk) {
        if (!header(offset_, chunk)) return false;
        if (chunk.end() <= length_) return true;
        if (kind_ != FormKind::wav || !chunk.is("data") || result_.isUnsized) return false;
        result_.isUnsized = true;
        chunk.size = endOfAudio(chunk.content()) - chunk.content();
        return true;
    }

    // Where audio ends that has no size: in front of tags whose chunks end with the file, or there.
    std::uint64_t endOfAudio(std::uint64_t begin) {
        const std::uint64_t from = std::max(begin, length_ - std::min(length_, tailSearch));
        const ByteVector tail = stream_.bytesAt(from, length_ - from);
        const ZALDataView bytes = viewOf(tail);
        // From the end, so that where a chunk leads to is known already.
        std::vector<bool> endsWithFile(bytes.size() + 1);
        std::size_t first = bytes.size();
        endsWithFile[first] = true;
        for (std::size_t at = bytes.size(); at-- > 0;) {
            if (!isTagAt(bytes, at)) continue;
            ByteReader reader(bytes.subspan(at + 4));
            const std::uint64_t end = at + chunkHeaderSize + reader.u32le();
            const std::uint64_t next = end + (end - at) % 2;
            const bool isLast = end == bytes.size();
            endsWithFile[at] = isLast || (next <= bytes.size() && endsWithFile[next]);
            if (endsWithFile[at]) first = at;
        }
        return from + first;
    }

    static bool isTagAt(ZALDataView bytes, std::size_t at) {
        if (bytes.size() - at < chunkHeaderSize) return false;
        const std::string_view id(reinterpret_cast<const char*>(bytes.data()) + at, 4);
        return id == "LIST" || id == "ID3 " || id == "id3 " || id == "VCAS";
    }

    void moveTo(std::uint64_t offset) {
        offset_ = offset;
        metFormEnd_ = metFormEnd_ || offset == formEnd_;
    }

    bool isPaddedWithZeros(std::uint64_t rest) {
        const auto isAudio = [this](const FormChunk& chunk) {
            return chunk.is(kind_ == FormKind::wav ? "data" : "SSND") && chunk.size > 0;
        };
        if (rest > restMax || std::ranges::none_of(result_.chunks, isAudio)) return false;
        const ByteVector bytes = stream_.bytesAt(offset_, rest);
        return std::ranges::all_of(viewOf(bytes), [](std::uint8_t byte) { return byte == 0; });
    }

    // What is wrong with the place where the walk ended; empty when nothing is.
    std::string damage() {
        if (std::ranges::all_of(result_.chunks, isTag)) return "it holds no chunk besides tags";
        const std::uint64_t rest = length_ - std::min(offset_, length_);
        if (!metFormEnd_ && rest > offset_ % 2 && !isPaddedWithZeros(rest))
            return fmt::format("its chunks are damaged at byte {}", offset_);
        // A recording that was cut off before its sizes were written.
        return rest > offset_ ? "its chunks are only a small part of it" : "";
    }

    TagLibStream& stream_;
    const FormKind kind_;
    const std::uint64_t length_;
    std::uint64_t formEnd_ = 0;
    std::uint64_t offset_ = headSize;
    bool metFormEnd_ = false;  // a chunk ended where the form says that it ends
    FormWalk result_;
};

}  // namespace

FormWalk walkForm(TagLibStream& stream, FormKind kind) {
    return Walker(stream, kind).walk();
}

}  // namespace zal
