#pragma once

#include "platform/FileReplacement.h"

#include <cstddef>
#include <cstdint>
#include <functional>
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

/// Why a file gave no document.
struct XMLReadError {
    enum class Stage { file, wellFormedness, document };
    Stage stage = Stage::file;
    std::string text;
};

/// How a document is laid out when it is written.
struct XMLStyle {
    const char* indent = "  ";
    bool emptyElementTags = true;  ///< "<A/>" for an element without content, not "<A></A>"
};

/// A document as a tree that can be changed and written back with everything it held. Takes some 32 KB at
/// least: never one per track or cue.
class XMLDocument {
  public:
    /// An empty document, in UTF-8.
    XMLDocument();
    ~XMLDocument();

    using Reader = std::function<void(const XMLDocument& document)>;

    /// Reads a file: a stream parser checks that it is well-formed while the tree is built beside it. Refused
    /// are also files that declare entities, since those would not survive, and elements nested deeper than
    /// 1000. Null on failure.
    ///
    /// The check takes longer than the tree: `meanwhile` may use the tree before it has ended, on the thread of
    /// the caller. It cannot count on any depth, on being called only once, or on a document in the end.
    static std::unique_ptr<XMLDocument> read(const std::string& path, XMLReadError& error,
                                             const Reader& meanwhile = {});

    /// When the file that was read had been changed, in nanoseconds since 1970.
    std::int64_t modified() const { return modified_; }

    /// The root element when it has this name.
    XMLElement root(const char* name) const;
    XMLElement appendRoot(const char* name);

    /// Gives the document the header of a standalone document in UTF-8.
    void setHeader();

    /// Writes the document in the encoding it was read in, with its byte-order mark. False when the sink gave
    /// up.
    bool write(const ChunkSink& sink, const XMLStyle& style) const;

  private:
    /// `wasChanged` tells that the file changed meanwhile, which is worth another try.
    static std::unique_ptr<XMLDocument> readOnce(const std::string& path, XMLReadError& error,
                                                 const Reader& meanwhile, bool& wasChanged);

    struct Tree;
    std::unique_ptr<Tree> tree_;
    std::int64_t modified_ = 0;
};

/// A text as an attribute keeps it.
std::string textForXML(std::string_view text);

}  // namespace zal
