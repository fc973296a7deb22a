#include "id3/FormChunks.h"

#include "base/Endian.h"
#include "id3/ID3Chapters.h"
#include "id3/TagLibStream.h"
#include "platform/Log.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <string_view>

namespace zal {

namespace {

constexpr std::uint64_t headSize = 12;
constexpr std::uint64_t chunkHeaderSize = 8;

ZALDataView viewOf(const TagLib::ByteVector& bytes) {
    return {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
}

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

bool isTag(TagLibStream& stream, const FormChunk& chunk, std::uint64_t content) {
    if (is(chunk, "LIST")) return chunk.size >= 4 && bytesAt(stream, content, 4) == "INFO";
    return isID3(chunk);
}

}  // namespace

FormWalk walkForm(TagLibStream& stream, FormKind kind) {
    FormWalk walk;
    const auto length = static_cast<std::uint64_t>(stream.length());
    walk.isTooLarge = length > std::numeric_limits<std::uint32_t>::max();
    const TagLib::ByteVector head = bytesAt(stream, 4, 4);
    ByteReader headReader(viewOf(head));
    const std::uint64_t formEnd = chunkHeaderSize + sizeIn(headReader, kind);
    bool endsWithForm = false;
    std::uint64_t offset = headSize;
    for (std::size_t count = 0; !walk.isTooLarge && offset + chunkHeaderSize <= length; ++count) {
        const TagLib::ByteVector header = bytesAt(stream, offset, chunkHeaderSize);
        ByteReader reader(viewOf(header));
        const ZALDataView id = reader.take(4);
        FormChunk chunk{.size = sizeIn(reader, kind)};
        const std::uint64_t content = offset + chunkHeaderSize;
        if (!isID(id) || content + chunk.size > length) break;
        std::copy(id.begin(), id.end(), chunk.id.begin());
        walk.isTooLarge = count == formChunkCountMax || (isReadWhole(chunk) && chunk.size > formTagSizeMax) ||
                          (isID3(chunk) && !chaptersNestSafely(stream, static_cast<long>(content)));
        if (!isTag(stream, chunk, content)) walk.chunks.push_back(chunk);
        offset = content + chunk.size;
        endsWithForm = endsWithForm || offset == formEnd;
        if (offset % 2 != 0 && isPadding(viewOf(bytesAt(stream, offset, 5)))) ++offset;
        endsWithForm = endsWithForm || offset == formEnd;
    }
    const std::uint64_t rest = length - std::min(offset, length);
    if (walk.chunks.empty()) {
        walk.damage = "it holds no chunk besides tags";
    } else if (!endsWithForm && rest > offset % 2) {
        walk.damage = fmt::format("its chunks are damaged at byte {}", offset);
    } else if (rest > offset) {
        // A recording that was cut off before its sizes were written.
        walk.damage = "its chunks are only a small part of it";
    }
    return walk;
}

namespace {

// Why the stream, after TagLib edited it, must not reach the disk; empty when it may.
std::string whyNot(TagLibStream& stream, FormKind kind, const FormWalk& before) {
    const FormWalk after = walkForm(stream, kind);
    if (after.isTooLarge) return "it would become too long for its format";
    const bool isSame = after.damage.empty() && after.chunks == before.chunks;
    return isSame ? std::string() : "its chunks would not stay as they are";
}

FormSave refuse(TagLibStream& stream, const std::string& reason) {
    logf("could not save '{}': {}", stream.name(), reason);
    return FormSave::refused;
}

}  // namespace

FormSave saveForm(TagLibStream& stream, FormKind kind, const std::function<bool()>& save) {
    try {
        const FormWalk before = walkForm(stream, kind);
        if (!before.damage.empty()) return refuse(stream, before.damage);
        if (!save()) return FormSave::failed;
        if (const std::string reason = whyNot(stream, kind, before); !reason.empty()) {
            stream.giveUp(reason);
            return refuse(stream, reason);
        }
    } catch (const std::exception& exception) {
        // What TagLib wrote so far stays in the stream and must not reach the disk.
        stream.giveUp(exception.what());
    }
    return stream.commit() ? FormSave::done : FormSave::failed;
}

}  // namespace zal
