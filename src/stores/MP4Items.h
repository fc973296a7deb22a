#pragma once

#include <mp4item.h>
#include <mp4tag.h>
#include <tbytevector.h>

#include <memory>
#include <vector>

namespace zal {

/// The content of an "ilst" atom, of which a save changes the items that were set. TagLib's items are made of
/// what stands there: numbers of any width, texts of any type, names with colons.
class MP4Items {
  public:
    explicit MP4Items(const TagLib::ByteVector& content);

    TagLib::MP4::Tag& tag() { return *tag_; }
    const TagLib::MP4::Tag& tag() const { return *tag_; }

    /// Whether there are more items and values than any real file has.
    bool isTooMuch() const { return isTooMuch_; }
    /// As the file has them.
    const TagLib::ByteVector& content() const { return content_; }
    /// What a save writes: all items of a name whose values did not change keep their bytes.
    TagLib::ByteVector merged() const;
    /// Takes that for what the file has.
    void accept(const TagLib::ByteVector& merged);
    /// Makes the items those of another file, byte for byte, but for some names.
    void replaceBy(const MP4Items& other, bool (*leavesOut)(const TagLib::String& name));

  private:
    struct RawItem {
        TagLib::String name;  // as TagLib's; empty when it cannot be one
        TagLib::ByteVector bytes;
    };

    void read(const TagLib::ByteVector& content);
    TagLib::MP4::ItemMap values() const;

    TagLib::ByteVector content_;
    std::vector<RawItem> items_;
    bool isTooMuch_ = false;
    TagLib::ByteVector tail_;
    std::unique_ptr<TagLib::MP4::Tag> tag_;
    TagLib::MP4::ItemMap originals_;  // shares the values of those in the tag
    std::unique_ptr<std::vector<RawItem>> replacement_;
};

}  // namespace zal
