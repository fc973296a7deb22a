#include "id3/FormChunks.h"

#include "base/Endian.h"
#include "base/Limits.h"
#include "id3/ID3Guards.h"
#include "id3/TagFile.h"
#include "id3/TagLibBytes.h"

#include <algorithm>
#include <limits>
#include <string_view>

namespace zal {

namespace {

constexpr std::uint64_t headSize = 12;
constexpr std::uint64_t chunkHeaderSize = 8;

TagLib::ByteVector bytesAt(TagLibStream& stream, std::uint64_t position, unsigned long count) {
    stream.seek(static_cast<long>(position));
    return stream.readBlock(count);
}

// What TagLib takes for a chunk's id.
bool isID(ZALDataView bytes) {
    return bytes.size() == 4 && std::all_of(bytes.begin(), bytes.end(),
                                            [](std::uint8_t byte) { return byte >= 32 && byte <= 127; });
}

std::uint32_t sizeIn(ByteReader& reader, FormKind kind) {
    return kind == FormKind::riff ? reader.u32le() : reader.u32be();
}

// TagLib takes the byte behind an odd end for padding when it is 0 or an id follows it; some programs write
// none.
bool isPadding(ZALDataView byteAndID) {
    return !byteAndID.empty() && (byteAndID.front() == 0 || isID(byteAndID.subspan(1)));
}

bool is(const FormChunk& chunk, std::string_view id) {
    return std::equal(id.begin(), id.end(), chunk.id.begin());
}

bool isID3(const FormChunk& chunk) {
    return is(chunk, "ID3 ") || is(chunk, "id3 ");
}

bool isReadWhole(const FormChunk& chunk) {
    return isID3(chunk) || is(chunk, "LIST") || is(chunk, "VCAS");
}

bool isInfo(TagLibStream& stream, const FormChunk& chunk, std::uint64_t content) {
    return is(chunk, "LIST") && chunk.size >= 4 && bytesAt(stream, content, 4) == "INFO";
}

// Goes from chunk to chunk until there is none or its header makes no sense.
class Walker {
  public:
    Walker(TagLibStream& stream, FormKind kind)
        : stream_(stream), kind_(kind), length_(static_cast<std::uint64_t>(stream.length())) {
        const TagLib::ByteVector size = bytesAt(stream, 4, 4);
        ByteReader reader(viewOf(size));
        formEnd_ = chunkHeaderSize + sizeIn(reader, kind);
    }

    // Reads the next header. False when there is no chunk.
    bool enter() {
        if (offset_ + chunkHeaderSize > length_) return false;
        const TagLib::ByteVector header = bytesAt(stream_, offset_, chunkHeaderSize);
        ByteReader reader(viewOf(header));
        const ZALDataView id = reader.take(4);
        chunk_.size = sizeIn(reader, kind_);
        if (!isID(id) || content() + chunk_.size > length_) return false;
        std::copy(id.begin(), id.end(), chunk_.id.begin());
        return true;
    }
    const FormChunk& chunk() const { return chunk_; }
    std::uint64_t content() const { return offset_ + chunkHeaderSize; }

    // Goes behind the chunk and its pad byte.
    void leave() {
        moveTo(content() + chunk_.size);
        if (offset_ % 2 != 0 && isPadding(viewOf(bytesAt(stream_, offset_, 5)))) moveTo(offset_ + 1);
    }

    bool isTooLong() const { return length_ > std::numeric_limits<std::uint32_t>::max(); }
    // What is wrong with the place where the walk ended; empty when nothing is.
    std::string damage() const {
        const std::uint64_t rest = length_ - std::min(offset_, length_);
        if (!metFormEnd_ && rest > offset_ % 2)
            return fmt::format("its chunks are damaged at byte {}", offset_);
        // A recording that was cut off before its sizes were written.
        return rest > offset_ ? "its chunks are only a small part of it" : "";
    }

  private:
    void moveTo(std::uint64_t offset) {
        offset_ = offset;
        metFormEnd_ = metFormEnd_ || offset == formEnd_;
    }

    TagLibStream& stream_;
    const FormKind kind_;
    const std::uint64_t length_;
    std::uint64_t formEnd_ = 0;
    std::uint64_t offset_ = headSize;
    bool metFormEnd_ = false;  // a chunk ended where the form says that it ends
    FormChunk chunk_;
};

}  // namespace

FormWalk walkForm(TagLibStream& stream, FormKind kind) {
    FormWalk walk;
    Walker walker(stream, kind);
    walk.isTooLarge = walker.isTooLong();
    for (std::size_t count = 0; !walk.isTooLarge && walker.enter(); ++count) {
        const FormChunk& chunk = walker.chunk();
        walk.isTooLarge = count == limits::formChunks || (isReadWhole(chunk) && chunk.size > limits::formTag);
        if (isID3(chunk)) {
            if (!walk.tagPosition) walk.tagPosition = walker.content();
        } else if (!isInfo(stream, chunk, walker.content())) {
            walk.chunks.push_back(chunk);
        }
        walker.leave();
    }
    walk.damage = walk.chunks.empty() ? "it holds no chunk besides tags" : walker.damage();
    return walk;
}

namespace {

bool hasSafeTag(TagLibStream& stream, const FormWalk& walk) {
    return !walk.tagPosition || isSafeID3v2(stream, static_cast<long>(*walk.tagPosition));
}

std::vector<FormChunk> keptChunks(const FormWalk& walk, FormLists lists) {
    std::vector<FormChunk> chunks = walk.chunks;
    if (lists == FormLists::replaced) {
        std::erase_if(chunks, [](const FormChunk& chunk) { return is(chunk, "LIST"); });
    }
    return chunks;
}

// Why the stream, after TagLib edited it, must not reach the disk; empty when it may.
std::string whyNot(TagLibStream& stream, FormKind kind, const FormWalk& before, FormLists lists) {
    const FormWalk after = walkForm(stream, kind);
    if (after.isTooLarge) return "it would become too long for its format";
    if (!hasSafeTag(stream, after)) return "its ID3v2 tag would be too much";
    const bool isSame = after.damage.empty() && keptChunks(after, lists) == keptChunks(before, lists);
    return isSame ? std::string() : "its chunks would not stay as they are";
}

}  // namespace

bool canReadForm(TagLibStream& stream, FormKind kind) {
    const FormWalk walk = walkForm(stream, kind);
    return !walk.isTooLarge && hasSafeTag(stream, walk);
}

FormSave saveForm(const ZALNullableString& path, TagLibStream& stream, FormKind kind,
                  const std::function<bool()>& save, FormLists lists) {
    std::string refusal;
    const bool saved = saveTag(path, stream, [&] {
        const FormWalk before = walkForm(stream, kind);
        refusal = before.damage;
        if (!refusal.empty() || !save()) return false;
        refusal = whyNot(stream, kind, before, lists);
        if (!refusal.empty()) stream.giveUp(refusal);
        return refusal.empty();
    });
    if (saved) return FormSave::done;
    if (refusal.empty()) return FormSave::failed;
    logf("could not save '{}': {}", describe(path), refusal);
    return FormSave::refused;
}

}  // namespace zal
