#include "containers/FLACBlocks.h"

#include "base/Limits.h"
#include "id3/ID3Guards.h"

#include <cstdint>

namespace zal {

namespace {

constexpr unsigned commentType = 4;

TagLib::ByteVector read(TagLib::IOStream& stream, long position, unsigned long length) {
    stream.seek(position);
    return stream.readBlock(length);
}

// TagLib adds up lengths in 32 bits: after one that wraps around it would read the same bytes as a field
// again and again.
bool lengthsDoNotWrap(const TagLib::ByteVector& comment) {
    const std::uint64_t size = comment.size();
    std::uint64_t position = 4 + std::uint64_t{comment.toUInt(0U, false)};
    if (position > UINT32_MAX) return false;
    const std::uint64_t fields = position < size ? comment.toUInt(static_cast<unsigned>(position), false) : 0;
    position += 4;
    for (std::uint64_t i = 0; i < fields && position < size; ++i) {
        position += 4 + std::uint64_t{comment.toUInt(static_cast<unsigned>(position), false)};
        if (position > UINT32_MAX) return false;
    }
    return true;
}

}  // namespace

bool canReadFLAC(TagLib::IOStream& stream) {
    long position = endOfID3v2(stream, 0);
    if (read(stream, position, 4) != "fLaC") return false;
    position += 4;
    for (int count = 0; count < limits::flacBlocks; ++count) {
        const TagLib::ByteVector header = read(stream, position, 4);
        if (header.size() < 4) return false;
        const long length = header.toUInt(1U, 3U);
        position += 4;
        if (length > stream.length() - position) return false;
        const auto type = static_cast<std::uint8_t>(header[0]);
        const bool comment = (type & 0x7F) == commentType;
        if (comment && !lengthsDoNotWrap(stream.readBlock(static_cast<unsigned long>(length)))) return false;
        position += length;
        if ((type & 0x80) != 0) return true;
    }
    return false;
}

}  // namespace zal
