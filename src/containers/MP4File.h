#pragma once

#include "containers/MP4Items.h"
#include "id3/TagLibStream.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zal {

struct MP4Atom {
    std::array<char, 4> nameBytes{};
    std::uint64_t place = 0;   ///< of its header
    std::uint64_t header = 8;  ///< 16 with a length of 64 bits
    std::uint64_t length = 0;  ///< with its header
    std::size_t parent = 0;    ///< the index of the atom around it; its own at the top

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

/// The tags of an MP4 file: the items in moov/udta/meta/ilst.
class MP4File {
  public:
    /// Null when the stream's file is no MP4 file.
    static std::unique_ptr<MP4File> open(TagLibStream& stream);

    MP4Items& items() { return *items_; }
    TagLib::MP4::Tag& tag() { return items_->tag(); }
    const TagLib::MP4::Tag& tag() const { return items_->tag(); }

    /// Puts what changed into the stream; nothing when nothing did. Gives the reason why the file cannot be
    /// saved, or an empty text.
    std::string write();
    /// Takes the file as it is after that was committed.
    void accept();

  private:
    struct Edit {
        std::uint64_t place = 0;     // where the new bytes go
        std::uint64_t replaced = 0;  // as many old ones go
        TagLib::ByteVector bytes;
        std::vector<MP4Atom> around;  // their lengths change, from the outermost on
    };

    explicit MP4File(TagLibStream& stream) : stream_(stream) {}

    bool read();
    Edit edit(const TagLib::ByteVector& content) const;
    Edit editInPlace(const MP4Atom& list, const TagLib::ByteVector& content) const;
    std::string movePlaces(std::uint64_t from, std::uint64_t shift);
    std::string moveTable(const MP4Atom& atom, std::uint64_t from, std::uint64_t shift);
    bool setLength(const MP4Atom& atom, std::uint64_t length);
    bool isAsWritten(const TagLib::ByteVector& content);

    TagLibStream& stream_;
    MP4Walk walk_;
    std::unique_ptr<MP4Items> items_;
    std::optional<TagLib::ByteVector> written_;  // the items that a save is about to write
    MP4Walk walkAfter_;                          // with them
};

}  // namespace zal
