#pragma once

#include <tbytevector.h>
#include <xiphcomment.h>

#include <map>
#include <memory>
#include <vector>

namespace zal {

/// A Xiph comment, of which a save changes the fields that were set. What is not UTF-8 is read as Latin-1.
class XiphStore {
  public:
    /// The comment of a file that has none.
    XiphStore();
    /// Reads the content of a comment block.
    explicit XiphStore(const TagLib::ByteVector& content);

    TagLib::Ogg::XiphComment& comment() { return *comment_; }
    const TagLib::Ogg::XiphComment& comment() const { return *comment_; }

    /// As the file has it.
    const TagLib::ByteVector& content() const { return content_; }
    /// Whether the lengths in it make sense; what is behind the first that does not cannot be written.
    bool isWhole() const { return isWhole_; }
    /// What a save writes: all fields of a name whose values did not change keep their bytes.
    TagLib::ByteVector merged() const;
    /// Takes that for what the file has.
    void accept(const TagLib::ByteVector& merged);
    /// Makes the fields those of another comment, byte for byte.
    void replaceFields(const XiphStore& other);

  private:
    struct Field {
        TagLib::String name;       // in capitals; empty when it has none, or TagLib cannot hold it
        TagLib::ByteVector bytes;  // without its length
    };

    void read(const TagLib::ByteVector& content);
    TagLib::Ogg::FieldListMap values() const;
    std::map<TagLib::String, TagLib::StringList> changedValues() const;
    std::vector<TagLib::ByteVector> newFields() const;

    TagLib::ByteVector content_;
    TagLib::ByteVector vendor_;
    std::vector<Field> fields_;
    TagLib::ByteVector tail_;
    bool isWhole_ = true;
    std::vector<Field> replacement_;
    bool isReplaced_ = false;
    std::unique_ptr<TagLib::Ogg::XiphComment> comment_;
    TagLib::Ogg::FieldListMap originals_;  // shares the values of those in the comment
};

}  // namespace zal
