#include "platform/XML.h"

#include "base/Unicode.h"
#include "platform/LimitedWriter.h"
#include "platform/WellFormedness.h"

#include <zaltag/platform/ZALHost.h>

#include <fmt/format.h>
#include <pugixml.hpp>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <future>
#include <new>
#include <thread>

namespace zal {

namespace {

pugi::xml_node nodeOf(void* node) {
    return pugi::xml_node(static_cast<pugi::xml_node_struct*>(node));
}

template <typename Handle>
Handle made(Handle handle) {
    if (!handle) throw std::bad_alloc();
    return handle;
}

void check(bool done) {
    if (!done) throw std::bad_alloc();
}

pugi::xml_node elementFrom(pugi::xml_node node, const char* name) {
    while (node && (node.type() != pugi::node_element || (name && std::strcmp(node.name(), name) != 0))) {
        node = node.next_sibling();
    }
    return node;
}

bool isBlank(const char* text) {
    return text[std::strspn(text, " \t\r\n")] == '\0';
}

// Most values are there already: what is there holds nothing that XML cannot hold.
void assign(pugi::xml_attribute attribute, const char* name, std::string_view value) {
    if (std::strcmp(attribute.name(), name) != 0) check(attribute.set_name(name));
    if (value != attribute.value()) check(attribute.set_value(textForXML(value).c_str()));
}

bool isCharacterOfXML(char32_t character) {
    return character >= 0x20 ? character != 0xFFFE && character != 0xFFFF
                             : character == '\t' || character == '\n' || character == '\r';
}

}  // namespace

std::string textForXML(std::string_view text) {
    const auto plain = [](char c) { return c >= 0x20 && c < 0x7F; };
    if (std::all_of(text.begin(), text.end(), plain)) return std::string(text);
    std::u16string units = utf16FromUTF8(text);
    for (char16_t& unit : units) {
        if (!isCharacterOfXML(unit)) unit = 0xFFFD;
    }
    return utf8FromUTF16(units);
}

std::string_view XMLElement::name() const {
    return nodeOf(node_).name();
}

const char* XMLElement::attribute(const char* name) const {
    const pugi::xml_attribute found = nodeOf(node_).attribute(name);
    return found ? found.value() : nullptr;
}

std::string XMLElement::attributeText(const char* name) const {
    return nodeOf(node_).attribute(name).value();
}

std::vector<std::pair<std::string, std::string>> XMLElement::attributes() const {
    std::vector<std::pair<std::string, std::string>> all;
    for (const pugi::xml_attribute attribute : nodeOf(node_).attributes()) {
        all.emplace_back(attribute.name(), attribute.value());
    }
    return all;
}

void XMLElement::setAttribute(const char* name, std::string_view value) {
    const pugi::xml_attribute found = nodeOf(node_).attribute(name);
    assign(found ? found : made(nodeOf(node_).append_attribute(name)), name, value);
}

void XMLElement::setExistingAttribute(const char* name, std::string_view value) {
    const pugi::xml_attribute found = nodeOf(node_).attribute(name);
    if (found) assign(found, name, value);
}

void XMLElement::setAttributes(std::span<const XMLAttribute> attributes) {
    pugi::xml_node node = nodeOf(node_);
    pugi::xml_attribute slot = node.first_attribute();
    for (const XMLAttribute& wanted : attributes) {
        if (!slot) slot = made(node.append_attribute(wanted.name));
        assign(slot, wanted.name, wanted.value);
        slot = slot.next_attribute();
    }
    while (slot) {
        const pugi::xml_attribute rest = slot;
        slot = slot.next_attribute();
        node.remove_attribute(rest);
    }
}

XMLElement XMLElement::firstChild(const char* name) const {
    return XMLElement(elementFrom(nodeOf(node_).first_child(), name).internal_object());
}

XMLElement XMLElement::next(const char* name) const {
    return XMLElement(elementFrom(nodeOf(node_).next_sibling(), name).internal_object());
}

// A lone run of white space would stand before the first child, and keep the children from being laid out.
void XMLElement::makeRoomForChildren() {
    pugi::xml_node node = nodeOf(node_);
    const pugi::xml_node only = node.first_child();
    if (only.type() == pugi::node_pcdata && !only.next_sibling() && isBlank(only.value())) {
        node.remove_child(only);
    }
}

XMLElement XMLElement::appendChild(const char* name) {
    makeRoomForChildren();
    return XMLElement(made(nodeOf(node_).append_child(name)).internal_object());
}

void XMLElement::moveToEnd(XMLElement element) {
    makeRoomForChildren();
    made(nodeOf(node_).append_move(nodeOf(element.node_)));
}

void XMLElement::removeChild(XMLElement child) {
    nodeOf(node_).remove_child(nodeOf(child.node_));
}

struct XMLDocument::Tree {
    pugi::xml_document document;
    pugi::xml_encoding encoding = pugi::encoding_utf8;
    bool hasMark = false;
    // The declaration as the file has it, in encodings of 8 bits, until setHeader() makes another one.
    std::string declaration;
};

XMLDocument::XMLDocument() : tree_(std::make_unique<Tree>()) {}

XMLDocument::~XMLDocument() = default;

namespace {

// True when the file is what it was, and still is what the path names.
bool isUnchanged(const ZALFileAttributes& before, ZALFileHandle& handle, const std::string& path) {
    ZALFileAttributes after;
    return !handle.attributes(after) && after.size == before.size && after.modified == before.modified &&
           isFileAt(*ZALHost::shared().fileSystem(), path, handle);
}

bool beginsWithMark(const char* bytes, std::size_t size) {
    const std::string_view head(bytes, std::min<std::size_t>(size, 4));
    return head.starts_with("\xEF\xBB\xBF") || head.starts_with("\xFF\xFE") || head.starts_with("\xFE\xFF") ||
           head.starts_with(std::string_view("\0\0\xFE\xFF", 4));
}

// Everything in the file becomes a node; without these flags the declaration, comments, instructions, the
// document type and white space that is an element's only content would be lost.
constexpr unsigned parseEverything = pugi::parse_full | pugi::parse_ws_pcdata_single;

constexpr std::size_t blockSize = std::size_t{1} << 20;

// Reads the file, unless the check refuses it meanwhile.
std::string readAll(ZALFileHandle& handle, char* buffer, std::size_t size,
                    const std::atomic<bool>& isRefused) {
    for (std::size_t position = 0; position < size && !isRefused; position += blockSize) {
        const std::size_t length = std::min(blockSize, size - position);
        std::size_t count = 0;
        const std::span<std::uint8_t> block(reinterpret_cast<std::uint8_t*>(buffer) + position, length);
        if (const auto error = handle.readAt(position, block, count)) return describe(error);
        if (count != length) return "the file became shorter while it was read";
    }
    return {};
}

// The declaration as it stands there, for encodings in which it is ASCII.
std::string declarationOf(std::string_view text) {
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    const auto end = text.substr(0, 1000).find("?>");
    return text.starts_with("<?xml") && end != text.npos ? std::string(text.substr(0, end + 2)) : "";
}

// The stream parser goes by the declaration, the tree by the byte-order mark.
bool isReadAsDeclared(const pugi::xml_document& document, pugi::xml_encoding encoding) {
    const pugi::xml_node first = document.first_child();
    if (first.type() != pugi::node_declaration) return true;
    const std::string declared = asciiLowercase(first.attribute("encoding").value());
    return declared != "iso-8859-1" || encoding == pugi::encoding_latin1;
}

}  // namespace

std::unique_ptr<XMLDocument> XMLDocument::read(const std::string& path, XMLReadError& error,
                                               const Reader& meanwhile) {
    for (int again = 0;; ++again) {
        bool wasChanged = false;
        auto document = readOnce(path, error, meanwhile, wasChanged);
        if (document || !wasChanged || again == 4) return document;
        // Another program is writing it: it will be whole in a moment.
        std::this_thread::sleep_for(std::chrono::milliseconds(20 << again));
        error = {};
    }
}

std::unique_ptr<XMLDocument> XMLDocument::readOnce(const std::string& path, XMLReadError& error,
                                                   const Reader& meanwhile, bool& wasChanged) {
    const auto files = ZALHost::shared().fileSystem();
    if (files->kindOfFile(path) == ZALFileKind::folder) {
        error.text = "it is a folder";
        return nullptr;
    }
    std::error_code failure;
    const auto handle = files->open(path, false, failure);
    const auto second = failure ? nullptr : files->open(path, false, failure);
    ZALFileAttributes attributes;
    if (!failure) failure = handle->attributes(attributes);
    if (failure) {
        error.text = describe(failure);
        return nullptr;
    }
    // The check is most of the work, so that the tree is made beside it.
    std::atomic<bool> isRefused = false;
    auto check = std::async(std::launch::async, [&] { return whyNotWellFormed(*second, isRefused); });

    auto document = std::make_unique<XMLDocument>();
    document->modified_ = attributes.modified;
    const auto size = static_cast<std::size_t>(attributes.size);
    auto* buffer = static_cast<char*>(pugi::get_memory_allocation_function()(std::max<std::size_t>(size, 1)));
    std::string unread = buffer ? readAll(*handle, buffer, size, isRefused) : "there is not enough memory";
    pugi::xml_parse_result parsed;  // none yet counts as failed
    if (buffer && unread.empty() && !isRefused) {
        document->tree_->hasMark = beginsWithMark(buffer, size);
        document->tree_->declaration = declarationOf({buffer, size});
        parsed = document->tree_->document.load_buffer_inplace_own(buffer, size, parseEverything);
        document->tree_->encoding = parsed.encoding;
    } else if (buffer) {
        pugi::get_memory_deallocation_function()(buffer);
    }

    if (parsed && meanwhile && !isRefused) meanwhile(*document);
    const std::string fault = check.get();
    if (!unread.empty()) {
        error.text = std::move(unread);
    } else if (!fault.empty()) {
        error = {XMLReadError::Stage::wellFormedness, fault};
    } else if (!isUnchanged(attributes, *handle, path) || !isFileAt(*files, path, *second)) {
        error.text = "the file was changed while it was read";
        wasChanged = true;
    } else if (!parsed) {
        error = {XMLReadError::Stage::document,
                 fmt::format("{} (at byte {})", parsed.description(), parsed.offset)};
    } else if (!isReadAsDeclared(document->tree_->document, parsed.encoding)) {
        error = {XMLReadError::Stage::wellFormedness, "its byte-order mark and its declaration disagree"};
    } else {
        return document;
    }
    return nullptr;
}

XMLElement XMLDocument::root(const char* name) const {
    return XMLElement(elementFrom(tree_->document.first_child(), name).internal_object());
}

XMLElement XMLDocument::appendRoot(const char* name) {
    return XMLElement(made(tree_->document.append_child(name)).internal_object());
}

void XMLDocument::setHeader() {
    pugi::xml_node first = tree_->document.first_child();
    if (first.type() != pugi::node_declaration) {
        first = made(tree_->document.prepend_child(pugi::node_declaration));
    }
    tree_->declaration.clear();
    static const XMLAttribute header[] = {{"version", "1.0"}, {"encoding", "UTF-8"}, {"standalone", "yes"}};
    XMLElement(first.internal_object()).setAttributes(header);
    tree_->encoding = pugi::encoding_utf8;
}

namespace {

std::size_t unitSize(pugi::xml_encoding encoding) {
    switch (encoding) {
        case pugi::encoding_utf16_le:
        case pugi::encoding_utf16_be:
            return 2;
        case pugi::encoding_utf32_le:
        case pugi::encoding_utf32_be:
            return 4;
        default:
            return 1;
    }
}

// ASCII in the code units of an encoding.
std::string inUnits(std::string_view text, pugi::xml_encoding encoding) {
    const bool isBig = encoding == pugi::encoding_utf16_be || encoding == pugi::encoding_utf32_be;
    const std::string zeros(unitSize(encoding) - 1, '\0');
    std::string units;
    for (const char c : text) {
        if (isBig) units += zeros;
        units += c;
        if (!isBig) units += zeros;
    }
    return units;
}

class SinkWriter : public pugi::xml_writer {
  public:
    SinkWriter(const ChunkSink& sink, pugi::xml_encoding encoding)
        : sink_(sink), return_(inUnits("\r", encoding)), reference_(inUnits("&#13;", encoding)) {}
    void write(const void* data, std::size_t size) override {
        const std::string_view text(static_cast<const char*>(data), size);
        std::size_t begin = 0;
        // The only carriage returns are those that a text had as references; as themselves they would be read
        // as line feeds.
        for (auto at = nextReturn(text, 0); at != text.npos; at = nextReturn(text, begin)) {
            append(text.substr(begin, at - begin));
            append(reference_);
            begin = at + return_.size();
        }
        append(text.substr(begin));
    }
    bool isDone() const { return done_; }

  private:
    std::size_t nextReturn(std::string_view text, std::size_t from) const {
        auto at = text.find(return_, from);
        while (at != text.npos && at % return_.size() != 0)
            at = text.find(return_, at + 1);
        return at;
    }

    void append(std::string_view text) {
        done_ = done_ && sink_({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    }

    const ChunkSink& sink_;
    const std::string return_;
    const std::string reference_;
    bool done_ = true;
};

// The last code point that an encoding of single bytes can hold; 0 for the Unicode encodings.
char32_t lastCharacter(pugi::xml_encoding encoding, const pugi::xml_document& document) {
    if (encoding == pugi::encoding_latin1) return 0xFF;
    const pugi::xml_node first = document.first_child();
    if (first.type() != pugi::node_declaration) return 0;
    return asciiLowercase(first.attribute("encoding").value()) == "us-ascii" ? 0x7F : 0;
}

}  // namespace

bool XMLDocument::write(const ChunkSink& sink, const XMLStyle& style) const {
    unsigned format = pugi::format_indent;
    if (!style.emptyElementTags) format |= pugi::format_no_empty_element_tags;
    const pugi::xml_document& document = tree_->document;
    const bool hasDeclaration = document.first_child().type() == pugi::node_declaration;
    // Without a declaration of its own the file had none.
    if (!hasDeclaration) format |= pugi::format_no_declaration;
    const char32_t last = lastCharacter(tree_->encoding, document);
    if (last == 0 && tree_->encoding != pugi::encoding_utf8) {
        if (tree_->hasMark) format |= pugi::format_write_bom;
        SinkWriter writer(sink, tree_->encoding);
        document.save(writer, style.indent, format, tree_->encoding);
        return writer.isDone();
    }
    LimitedWriter limited(sink, last == 0 ? 0x10FFFF : last);
    const ChunkSink limitedSink = [&](ZALDataView bytes) {
        return last == 0 ? sink(bytes) : limited.write(bytes);
    };
    SinkWriter writer(limitedSink, pugi::encoding_utf8);
    const bool keepsDeclaration = hasDeclaration && !tree_->declaration.empty();
    const std::string head = (tree_->hasMark ? "\xEF\xBB\xBF" : "") +
                             (keepsDeclaration ? tree_->declaration + "\n" : std::string());
    if (!head.empty() && !sink({reinterpret_cast<const std::uint8_t*>(head.data()), head.size()}))
        return false;
    for (const pugi::xml_node node : document.children()) {
        if (keepsDeclaration && node.type() == pugi::node_declaration) continue;
        node.print(writer, style.indent, format, pugi::encoding_utf8);
    }
    return limited.finish() && writer.isDone();
}

}  // namespace zal
