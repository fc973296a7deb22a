#pragma once

#include <zaltag/base/ZALData.h>

#include <tbytevector.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// The frames of an ID3v2 tag as bytes: what a file holds, whether or not anyone understands it.

namespace zal {

/// A frame in the form of its tag's version; the bytes share the tag's memory.
struct RawFrame {
    unsigned version = 4;           ///< 2, 3 or 4
    bool isUnsynchronised = false;  ///< a tag of version 2.4 says so for all of its frames
    TagLib::ByteVector bytes;       ///< header and content

    std::string id() const;         ///< as it stands there, of three or four characters
    std::string currentID() const;  ///< the one of version 2.4, where that has one
    std::size_t contentSize() const;
};

/// What readers make of a frame, whatever its version.
struct FrameContent {
    std::string id;           ///< currentID()
    TagLib::ByteVector body;  ///< without unsynchronisation; as it is stored when compressed or encrypted
    std::uint32_t size = 0;   ///< what a compressed body becomes, as the frame says
    bool isCompressed = false;
    int group = -1;       ///< the octet of its group; below 0 without one
    int encryption = -1;  ///< the octet of its encryption; below 0 without one

    bool operator==(const FrameContent&) const = default;
};

/// The frames of a tag in their order.
struct RawTag {
    unsigned version = 4;
    std::vector<RawFrame> frames;
    TagLib::ByteVector tail;  ///< what is left behind the last frame, with its padding; empty for zeros alone
    bool isOpaque = false;    ///< of a version or form that nobody reads: no frames, and not to be written
};

/// The header of an ID3v2 tag.
struct ID3v2Header {
    static constexpr std::size_t length = 10;

    unsigned version = 4;
    unsigned revision = 0;
    bool isUnsynchronised = false;
    bool isExtended = false;
    bool isCompressed = false;  ///< as a whole, in version 2.2
    bool hasFooter = false;
    std::uint32_t size = 0;  ///< of what stands behind the header, without the footer

    /// Reads ten octets; false when they are no header.
    bool read(ZALDataView bytes);
    std::uint64_t completeSize() const { return length + std::uint64_t{size} + (hasFooter ? length : 0); }
};

/// The most that the size of a tag can say, and of a frame in version 2.4.
inline constexpr std::uint32_t id3SizeMax = (1U << 28) - 1;

/// Takes a tag apart; `bytes` is what stands behind its header.
RawTag rawTag(const ID3v2Header& header, const TagLib::ByteVector& bytes);

/// The same for frames of a version in a row, such as those in a chapter.
RawTag rawFrames(unsigned version, bool isUnsynchronised, const TagLib::ByteVector& bytes);

/// Takes a frame apart.
FrameContent contentOf(const RawFrame& frame);

/// Whether a frame of version 2.4 says its size as that version does.
bool hasRightSize(const RawFrame& frame);

/// Whether a reader finds the same in both frames: the same content, or, where version 2.4 asks for another
/// form, the same picture, or the same frames in a chapter.
bool isSameContent(const RawFrame& old, const RawFrame& now);

/// The frame as a tag of version 2.4 holds it: the same body under another header. Changed besides are a
/// picture of version 2.2, which gets the form of an APIC frame, and the headers of frames in a chapter.
TagLib::ByteVector frameInVersion4(const RawFrame& frame);

/// A frame of version 2.4 without flags.
TagLib::ByteVector plainFrame(const std::string& id, const TagLib::ByteVector& body);

/// The header of a tag of version 2.4 without flags.
TagLib::ByteVector tagHeader(std::uint32_t size);

/// Whether readers go on behind a frame of this id: some stop at one that is not of capitals and digits.
bool isUsualFrameID(const std::string& id);

}  // namespace zal
