#pragma once

#include "walks/MP3Layout.h"

#include <id3v1tag.h>

#include <cstdint>
#include <memory>

namespace zal {

/// The ID3v1 tag at the end of a file, of which a save changes the fields that were set.
class ID3v1Store {
  public:
    static constexpr std::uint64_t length = id3v1Length;

    /// The tag of a file that has none.
    ID3v1Store();
    /// Null when the file does not end with one.
    static std::unique_ptr<ID3v1Store> read(TagLibStream& stream);

    TagLib::ID3v1::Tag& tag();
    const TagLib::ID3v1::Tag& tag() const;
    /// As the file has it.
    const TagLib::ID3v1::Tag& original() const;

    /// What a save writes: TagLib's rendering, but for each field the old bytes where TagLib reads the same
    /// from both.
    TagLib::ByteVector merged() const;
    /// Whether that is something else than what the file has.
    bool isChanged() const { return merged() != bytes_; }
    /// Takes the file as it is after that was written.
    void accept();

  private:
    struct Tag;

    std::shared_ptr<Tag> tag_;
    std::shared_ptr<Tag> original_;
    TagLib::ByteVector bytes_;  // empty when the file has no tag
};

}  // namespace zal
