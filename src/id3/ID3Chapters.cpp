#include "id3/ID3Chapters.h"

#include "id3/MPEGFrames.h"

#include <id3v2header.h>
#include <id3v2synchdata.h>

#include <algorithm>
#include <string_view>

namespace zal {

namespace {

// A level takes 400 bytes of stack, of which a host's thread may have no more than 512 KiB. Audio books have
// some hundred chapters, beside one another.
constexpr int countMax = 1000;

// Most tags are one block, which the stream then hands to TagLib as it is.
constexpr unsigned blockSize = 1 << 20;
constexpr unsigned headerSize = 10;  // of a frame: id, length, flags

// Text that happens to read like a chapter's id has no such length behind it. In tags of version 2.3 the
// length is not sync-safe, and no less than it reads here.
bool fits(const TagLib::ByteVector& header, long remaining) {
    return static_cast<long>(TagLib::ID3v2::SynchData::toUInt(header.mid(4, 4))) <= remaining;
}

bool isCompressed(const TagLib::ByteVector& header) {
    return (header.at(9) & 0x88) != 0;  // of version 2.3 and of 2.4
}

bool hasFewChapters(TagLib::IOStream& stream, long position, long end) {
    int count = 0;
    for (; position < end; position += blockSize) {
        stream.seek(position);
        const long wanted = std::min<long>(end - position, blockSize) + headerSize - 1;
        const TagLib::ByteVector block = stream.readBlock(static_cast<unsigned long>(wanted));
        const std::string_view bytes(block.data(), block.size());
        for (std::size_t at = bytes.find('C'); at < blockSize; at = bytes.find('C', at + 1)) {
            if (bytes.size() - at < headerSize) break;
            if (bytes[at + 1] != 'H' && bytes[at + 1] != 'T') continue;
            const std::string_view id = bytes.substr(at, 4);
            if (id != "CHAP" && id != "CTOC") continue;
            const TagLib::ByteVector header = block.mid(static_cast<unsigned>(at), headerSize);
            if (!fits(header, end - position - static_cast<long>(at))) continue;
            if (isCompressed(header) || ++count > countMax) return false;
        }
    }
    return true;
}

}  // namespace

bool chaptersNestSafely(TagLib::IOStream& stream, long position) {
    stream.seek(position);
    const TagLib::ByteVector bytes = stream.readBlock(TagLib::ID3v2::Header::size());
    if (!bytes.startsWith("ID3")) return true;
    const long end = position + static_cast<long>(TagLib::ID3v2::Header(bytes).completeTagSize());
    return hasFewChapters(stream, position, std::min(end, stream.length()));
}

bool chaptersOfMP3NestSafely(TagLib::IOStream& stream) {
    stream.seek(0);
    if (stream.readBlock(3) == "ID3") return chaptersNestSafely(stream, 0);
    return beginsWithMPEGFrame(stream) || hasFewChapters(stream, 0, stream.length());
}

}  // namespace zal
