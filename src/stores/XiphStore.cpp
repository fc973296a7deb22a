#include "stores/XiphStore.h"

#include "base/Endian.h"
#include "base/Unicode.h"
#include "taglib/TagLibBytes.h"

#include <algorithm>
#include <map>

namespace zal {

namespace {

using TagLib::ByteVector;
using TagLib::Ogg::FieldListMap;

// What TagLib takes for the name of a field.
bool isName(const std::string& name) {
    return !name.empty() && std::ranges::all_of(name, [](char c) { return c >= 0x20 && c <= 0x7D; });
}

// Pictures in fields are not the file's pictures, and nobody sets them.
bool isPicture(const TagLib::String& name) {
    return name == "METADATA_BLOCK_PICTURE" || name == "COVERART";
}

std::string_view textIn(const ByteVector& field) {
    return {field.data(), field.size()};
}

TagLib::String nameIn(const ByteVector& field) {
    const std::string name(textIn(field).substr(0, textIn(field).find('=')));
    if (name.size() == field.size() || !isName(name)) return {};
    const TagLib::String upper = TagLib::String(name).upper();
    return isPicture(upper) ? TagLib::String() : upper;
}

TagLib::String valueIn(const ByteVector& field) {
    const std::string value(textIn(field).substr(textIn(field).find('=') + 1));
    return {value, isValidUTF8(value) ? TagLib::String::UTF8 : TagLib::String::Latin1};
}

ByteVector rendered(const TagLib::String& name, const TagLib::String& value) {
    ByteVector field = name.data(TagLib::String::UTF8);
    field.append('=');
    return field.append(value.data(TagLib::String::UTF8));
}

void append(ByteVector& out, const ByteVector& text) {
    out.append(ByteVector::fromUInt(text.size(), false)).append(text);
}

}  // namespace

XiphStore::XiphStore() : comment_(std::make_unique<TagLib::Ogg::XiphComment>()) {}

XiphStore::XiphStore(const ByteVector& content) : XiphStore() {
    read(content);
    for (const auto& [name, values] : values()) {
        for (const TagLib::String& value : values) {
            comment_->addField(name, value, false);
        }
    }
    originals_ = comment_->fieldListMap();
}

void XiphStore::read(const ByteVector& content) {
    content_ = content;
    fields_.clear();
    ByteReader reader(viewOf(content));
    const auto text = [&] {
        const std::uint32_t size = reader.u32le();
        const std::size_t at = reader.offset();
        reader.skip(size);
        return reader.failed() ? ByteVector() : content.mid(static_cast<unsigned>(at), size);
    };
    vendor_ = text();
    const std::uint32_t count = reader.u32le();
    while (!reader.failed() && fields_.size() < count) {
        const ByteVector bytes = text();
        if (!reader.failed()) fields_.push_back({nameIn(bytes), bytes});
    }
    isWhole_ = !reader.failed() || content.isEmpty();
    tail_ = content.mid(static_cast<unsigned>(reader.offset()));
}

FieldListMap XiphStore::values() const {
    FieldListMap values;
    for (const Field& field : fields_) {
        const TagLib::String value = field.name.isEmpty() ? TagLib::String() : valueIn(field.bytes);
        if (!value.isEmpty()) values[field.name].append(value);
    }
    return values;
}

void XiphStore::accept(const ByteVector& merged) {
    read(merged);
    originals_ = isReplaced_ ? values() : comment_->fieldListMap();
    isReplaced_ = false;
}

void XiphStore::replaceFields(const XiphStore& other) {
    replacement_ = other.fields_;
    isReplaced_ = true;
}

// The fields as they are to be written.
std::vector<ByteVector> XiphStore::newFields() const {
    std::vector<ByteVector> fields;
    if (isReplaced_) {
        for (const Field& field : replacement_) {
            fields.push_back(field.bytes);
        }
        return fields;
    }
    std::map<TagLib::String, TagLib::StringList> changed = changedValues();
    for (const Field& field : fields_) {
        const auto found = changed.find(field.name);
        if (field.name.isEmpty() || found == changed.end()) {
            fields.push_back(field.bytes);
        } else if (!found->second.isEmpty()) {
            fields.push_back(rendered(field.name, found->second.front()));
            found->second.erase(found->second.begin());
        }
    }
    for (const auto& [name, values] : changed) {
        for (const TagLib::String& value : values) {
            fields.push_back(rendered(name, value));
        }
    }
    return fields;
}

// The values of names whose values are not those that were read.
std::map<TagLib::String, TagLib::StringList> XiphStore::changedValues() const {
    const FieldListMap& now = comment_->fieldListMap();
    std::map<TagLib::String, TagLib::StringList> changed;
    for (const auto& [name, values] : now) {
        const auto before = originals_.find(name);
        if (before == originals_.end() || before->second != values) changed[name] = values;
    }
    for (const auto& [name, values] : originals_) {
        if (!now.contains(name)) changed[name].clear();
    }
    return changed;
}

ByteVector XiphStore::merged() const {
    if (!isReplaced_ && changedValues().empty()) return content_;
    const std::vector<ByteVector> fields = newFields();
    ByteVector out;
    append(out, vendor_);
    out.append(ByteVector::fromUInt(static_cast<unsigned>(fields.size()), false));
    for (const ByteVector& field : fields) {
        append(out, field);
    }
    return out.append(tail_);
}

}  // namespace zal
