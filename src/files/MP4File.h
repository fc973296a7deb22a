#pragma once

#include "stores/MP4Items.h"
#include "walks/MP4Walk.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zal {

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
