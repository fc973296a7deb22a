#pragma once

#include "taglib/TagLibStream.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zal {

struct MP4Atom {
    static constexpr std::uint64_t headerSize = 8;
    static constexpr std::uint64_t wideHeaderSize = 16;

    std::array<char, 4> nameBytes{};
    std::uint64_t place = 0;            ///< of its header
    std::uint64_t header = headerSize;  ///< wideHeaderSize with a length of 64 bits
    std::uint64_t length = 0;           ///< with its header
    std::size_t parent = 0;             ///< the index of the atom around it; its own at the top

    std::string_view name() const { return {nameBytes.data(), nameBytes.size()}; }
    std::uint64_t content() const { return place + header; }
    std::uint64_t end() const { return place + length; }
};

/// The atoms of a file that matter to a save: those around the items, those that hold places of the audio,
/// and free space.
struct MP4Walk {
    std::vector<MP4Atom> atoms;  ///< in the order of the file
    bool isTooMuch = false;      ///< too many of them, or too deep within one another
    std::string damage;          ///< why the file must not be edited; empty when it may

    /// The first atom of a name in another one; null when there is none.
    const MP4Atom* child(const MP4Atom* parent, std::string_view name) const;
};

MP4Walk walkMP4(TagLibStream& stream);

}  // namespace zal
