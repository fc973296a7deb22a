#pragma once

#include <zaltag/base/ZALData.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace zal {

/// One entry of a TIFF directory.
struct TIFFEntry {
    static constexpr std::uint16_t byteType = 1;
    static constexpr std::uint16_t textType = 2;
    static constexpr std::uint16_t shortType = 3;
    static constexpr std::uint16_t longType = 4;

    std::uint16_t tag = 0;
    std::uint16_t type = 0;
    std::uint32_t count = 0;
    std::array<std::uint8_t, 4>
        value{};  ///< the value itself where it fits, else its offset; in the block's order
};

struct TIFFDirectory {
    std::vector<TIFFEntry> entries;
    std::uint32_t next = 0;  ///< offset of the next directory; 0 for none
    std::size_t begin = 0;   ///< where it lies in the block
    std::size_t end = 0;

    /// The first entry with this tag, or null.
    const TIFFEntry* find(std::uint16_t tag) const;
};

/// The structure that TIFF pictures and EXIF blocks share: a header, and directories of entries with offsets
/// into the block. Reads within the bytes alone; the bytes belong to the caller.
class TIFFBlock {
  public:
    static constexpr std::size_t headerSize = 8;

    /// Null unless the bytes begin with a TIFF header.
    static std::optional<TIFFBlock> of(ZALDataView bytes);

    ZALDataView bytes() const { return bytes_; }
    bool bigEndian() const { return bigEndian_; }

    /// The directory that the header names. Null when it does not lie in the block whole.
    std::optional<TIFFDirectory> firstDirectory() const { return directoryAt(number(bytes_.subspan(4, 4))); }
    std::optional<TIFFDirectory> directoryAt(std::uint32_t offset) const;

    /// A text's bytes up to its first NUL. Null for another type and for one that does not lie in the block.
    std::optional<ZALDataView> textOf(const TIFFEntry& entry) const;
    /// The numbers of an entry of bytes, shorts or longs. Empty for another type and for one that does not
    /// lie in the block.
    std::vector<std::uint32_t> numbersOf(const TIFFEntry& entry) const;
    /// A number of one to four bytes in the block's order.
    std::uint32_t number(ZALDataView bytes) const;

  private:
    TIFFBlock(ZALDataView bytes, bool bigEndian) : bytes_(bytes), bigEndian_(bigEndian) {}

    ZALDataView valueOf(const TIFFEntry& entry, std::size_t size) const;

    ZALDataView bytes_;
    bool bigEndian_;
};

}  // namespace zal
