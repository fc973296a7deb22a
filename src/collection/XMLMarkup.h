#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Markup as text, for changes that must leave every other character as it is. All of it is UTF-8 that a
// parser has found well-formed.

namespace zal {

/// A range of a text.
struct XMLRange {
    std::size_t begin = 0;
    std::size_t end = 0;
};

/// Goes from tag to tag; comments, instructions, CDATA and the document type are passed over.
class XMLTags {
  public:
    enum class Kind { start, end, empty };

    explicit XMLTags(std::string_view text) : text_(text) {}
    /// To the next tag; false when there is none.
    bool next();

    Kind kind() const { return kind_; }
    XMLRange tag() const { return tag_; }
    std::string_view name() const { return name_; }

  private:
    std::size_t endOf(std::string_view what, std::size_t from) const;
    std::size_t endOfTag(std::size_t from) const;

    std::string_view text_;
    std::size_t at_ = 0;
    Kind kind_ = Kind::start;
    XMLRange tag_;
    std::string_view name_;
};

/// An element's tags, and the elements in it.
struct XMLParts {
    XMLRange startTag;
    bool isEmpty = false;    ///< "<A/>": there is no other tag
    std::size_t endTag = 0;  ///< where the end tag begins
    struct Child {
        XMLRange range;
        std::string_view name;
    };
    std::vector<Child> children;
};

/// The parts of the element that a text is.
XMLParts partsOf(std::string_view element);

/// What an attribute is to be in a tag.
struct XMLAttributeEdit {
    const char* name;
    std::string value;
    bool isAdded = true;  ///< also when the tag lacks it, behind the others
};

/// A start tag, or an empty element's, with other values; everything else in it stays.
std::string withAttributes(std::string_view tag, const std::vector<XMLAttributeEdit>& edits);

/// A text as the value of an attribute, between quotes of either kind.
std::string attributeValue(std::string_view text);

/// The white space that stands right before a place.
std::string_view blankBefore(std::string_view text, std::size_t at);

/// The tag of an empty element as a start tag.
std::string startTagOf(std::string_view emptyTag);

}  // namespace zal
