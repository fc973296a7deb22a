#include "collection/XML.h"

#include "base/Unicode.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cstring>
#include <new>

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
void assign(pugi::xml_attribute attribute, std::string_view value) {
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

void XMLElement::packAttributes(std::string& packed, std::string_view within) const {
    for (const pugi::xml_attribute attribute : nodeOf(node_).attributes()) {
        if (!within.empty()) packed.append(within).push_back('/');
        packed.append(attribute.name()).push_back('\0');
        packed.append(attribute.value()).push_back('\0');
    }
}

void XMLElement::setAttribute(const char* name, std::string_view value) {
    const pugi::xml_attribute found = nodeOf(node_).attribute(name);
    assign(found ? found : made(nodeOf(node_).append_attribute(name)), value);
}

void XMLElement::setExistingAttribute(const char* name, std::string_view value) {
    if (const pugi::xml_attribute found = nodeOf(node_).attribute(name)) assign(found, value);
}

void XMLElement::setAttributes(std::span<const XMLAttribute> attributes) {
    pugi::xml_node node = nodeOf(node_);
    pugi::xml_attribute slot = node.first_attribute();
    for (const XMLAttribute& wanted : attributes) {
        if (!slot) slot = made(node.append_attribute(wanted.name));
        if (std::strcmp(slot.name(), wanted.name) != 0) check(slot.set_name(wanted.name));
        assign(slot, wanted.value);
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
};

XMLDocument::XMLDocument() : tree_(std::make_unique<Tree>()) {}

XMLDocument::~XMLDocument() = default;

XMLElement XMLDocument::load(std::string_view text) {
    // Everything in the text becomes a node; without these flags comments, instructions and white space that
    // is an element's only content would be lost.
    constexpr unsigned everything = pugi::parse_full | pugi::parse_ws_pcdata_single;
    const auto parsed =
        tree_->document.load_buffer(text.data(), text.size(), everything, pugi::encoding_utf8);
    if (parsed.status == pugi::status_out_of_memory) throw std::bad_alloc();
    if (!parsed) return {};
    return XMLElement(elementFrom(tree_->document.first_child(), nullptr).internal_object());
}

XMLElement XMLDocument::makeRoot(const char* name) {
    tree_->document.reset();
    return XMLElement(made(tree_->document.append_child(name)).internal_object());
}

namespace {

class TextWriter final : public pugi::xml_writer {
  public:
    void write(const void* data, std::size_t size) override {
        // The only carriage returns are those that a text had as references; as themselves they would be read
        // as line feeds.
        std::string_view added(static_cast<const char*>(data), size);
        if (text.empty()) added.remove_prefix(std::min(added.find('<'), added.size()));
        for (auto at = added.find('\r'); at != added.npos; at = added.find('\r')) {
            text.append(added.substr(0, at)).append("&#13;");
            added.remove_prefix(at + 1);
        }
        text.append(added);
    }
    std::string text;
};

}  // namespace

std::string markupOf(const XMLElement& element, const XMLStyle& style, unsigned depth, std::size_t length) {
    unsigned format = pugi::format_indent;
    if (!style.emptyElementTags) format |= pugi::format_no_empty_element_tags;
    TextWriter writer;
    writer.text.reserve(length);
    nodeOf(element.handle()).print(writer, style.indent, format, pugi::encoding_utf8, depth);
    writer.text.resize(writer.text.rfind('>') + 1);  // none: 0
    return std::move(writer.text);
}

}  // namespace zal
