#pragma once

#include <infotag.h>
#include <tbytevector.h>

#include <memory>
#include <vector>

namespace zal {

/// The content of a LIST chunk of the type INFO, of which a save changes the fields that were set. What is
/// not UTF-8 is read as Latin-1.
class InfoList {
  public:
    /// A list without fields.
    InfoList();
    explicit InfoList(const TagLib::ByteVector& content);

    TagLib::RIFF::Info::Tag& tag() { return *tag_; }
    const TagLib::RIFF::Info::Tag& tag() const { return *tag_; }

    bool isChanged() const { return merged() != content_; }
    /// Takes what was merged for what the file has.
    void accept(const TagLib::ByteVector& merged);
    /// What a save writes: all fields of an id whose text did not change keep their bytes. Empty when there
    /// is nothing to write.
    TagLib::ByteVector merged() const;

  private:
    void read(const TagLib::ByteVector& content);

    struct Field {
        TagLib::ByteVector id;
        TagLib::ByteVector bytes;  // all of it, with its padding
    };

    TagLib::ByteVector content_;
    std::vector<Field> fields_;
    TagLib::ByteVector tail_;  // behind the fields
    std::unique_ptr<TagLib::RIFF::Info::Tag> tag_;
    TagLib::RIFF::Info::FieldListMap original_;
};

}  // namespace zal
