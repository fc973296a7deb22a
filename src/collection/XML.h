#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zal {

struct XMLAttribute {
    const char* name;
    std::string value;
};

/// An element of an XMLDocument: one pointer, copied freely, valid as long as its document and until it is
/// removed from it. A default element is none. Texts are UTF-8.
class XMLElement {
  public:
    XMLElement() = default;
    explicit operator bool() const { return node_ != nullptr; }
    bool operator==(const XMLElement& other) const { return node_ == other.node_; }

    /// The pointer, for who stores elements without seeing this class.
    void* handle() const { return node_; }
    static XMLElement ofHandle(void* handle) { return XMLElement(handle); }

    std::string_view name() const;
    /// The value of an attribute, valid until the attribute is changed; null when the element lacks it.
    const char* attribute(const char* name) const;
    /// The value, or the empty text when the element lacks the attribute.
    std::string attributeText(const char* name) const;
    /// All attributes in their order.
    std::vector<std::pair<std::string, std::string>> attributes() const;

    /// Appends names and values in turn, each with a NUL behind it; names in an element begin with its name
    /// and a slash, when one is given.
    void packAttributes(std::string& packed, std::string_view within = {}) const;

    /// Sets the value, after the existing attributes when there is none of that name. Characters that XML
    /// cannot hold become U+FFFD, in every function here.
    void setAttribute(const char* name, std::string_view value);
    /// Sets the value of an attribute that is there already.
    void setExistingAttribute(const char* name, std::string_view value);
    /// Makes these the element's attributes, in this order. Existing ones are overwritten in place, so that
    /// little memory is taken.
    void setAttributes(std::span<const XMLAttribute> attributes);

    /// The first child element, of that name when one is given.
    XMLElement firstChild(const char* name = nullptr) const;
    /// The next element beside this one, of that name when one is given.
    XMLElement next(const char* name = nullptr) const;

    XMLElement appendChild(const char* name);
    /// Makes an element of the same document the last child.
    void moveToEnd(XMLElement element);
    /// Removes a child for good.
    void removeChild(XMLElement child);

  private:
    friend class XMLDocument;
    explicit XMLElement(void* node) : node_(node) {}
    void makeRoomForChildren();
    void* node_ = nullptr;
};

/// How an element is laid out when it is written.
struct XMLStyle {
    const char* indent = "  ";
    bool emptyElementTags = true;  ///< "<A/>" for an element without content, not "<A></A>"
};

/// Elements as a tree that can be changed and written back with everything it held. Takes some 32 KB at
/// least: never one per track or cue.
class XMLDocument {
  public:
    XMLDocument();
    ~XMLDocument();

    /// Makes the tree of an element from its text and gives the element, in the place of what the document
    /// held. None for a text that is no element.
    XMLElement load(std::string_view text);
    /// Makes a new root element in the place of what the document held.
    XMLElement makeRoot(const char* name);

  private:
    struct Tree;
    std::unique_ptr<Tree> tree_;
};

/// An element as text, in the style of a file where it stands `depth` elements deep: without the white space
/// in front of it and behind it. `length` is about how long it will be, for the memory.
std::string markupOf(const XMLElement& element, const XMLStyle& style, unsigned depth,
                     std::size_t length = 0);

/// A text as an attribute keeps it.
std::string textForXML(std::string_view text);

}  // namespace zal
