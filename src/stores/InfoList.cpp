#include "stores/InfoList.h"

#include "base/Endian.h"
#include "base/Unicode.h"
#include "taglib/TagLibBytes.h"

#include <algorithm>
#include <set>
#include <string>

namespace zal {

namespace {

using TagLib::ByteVector;
using TagLib::RIFF::Info::Tag;

constexpr unsigned markSize = 4;
constexpr unsigned headerSize = 8;

TagLib::String textOf(const ByteVector& field) {
    const ZALDataView bytes = viewOf(field).subspan(headerSize);
    const std::uint32_t size = field.toUInt(4U, false);
    const ZALDataView value = bytes.first(std::min<std::size_t>(size, bytes.size()));
    const std::string text(value.begin(), std::find(value.begin(), value.end(), 0));
    return {text, isValidUTF8(text) ? TagLib::String::UTF8 : TagLib::String::Latin1};
}

ByteVector rendered(const ByteVector& id, const TagLib::String& text) {
    ByteVector value = text.data(TagLib::String::UTF8);
    value.append('\0');
    ByteVector field = id;
    field.append(ByteVector::fromUInt(value.size(), false)).append(value);
    if (field.size() % 2 != 0) field.append('\0');
    return field;
}

}  // namespace

InfoList::InfoList() : tag_(std::make_unique<Tag>()) {}

InfoList::InfoList(const ByteVector& content) : InfoList() {
    read(content);
    for (const Field& field : fields_) {
        if (const TagLib::String text = textOf(field.bytes); !text.isEmpty())
            tag_->setFieldText(field.id, text);
    }
    original_ = tag_->fieldListMap();
}

void InfoList::read(const ByteVector& content) {
    content_ = content;
    fields_.clear();
    unsigned at = markSize;
    while (content.size() >= at + headerSize) {
        const std::uint64_t size = headerSize + std::uint64_t{content.toUInt(at + 4, false)};
        if (size > content.size() - at) break;
        const auto padded =
            static_cast<unsigned>(std::min<std::uint64_t>(size + size % 2, content.size() - at));
        fields_.push_back({content.mid(at, 4), content.mid(at, padded)});
        at += padded;
    }
    tail_ = content.mid(at);
}

void InfoList::accept(const ByteVector& merged) {
    read(merged);
    original_ = tag_->fieldListMap();
}

ByteVector InfoList::merged() const {
    const TagLib::RIFF::Info::FieldListMap now = tag_->fieldListMap();
    const auto textIn = [](const TagLib::RIFF::Info::FieldListMap& map, const ByteVector& id) {
        return map.contains(id) ? map[id] : TagLib::String();
    };
    ByteVector out;
    const auto append = [&out](const ByteVector& bytes) {
        if (out.size() % 2 != 0) out.append('\0');
        out.append(bytes);
    };
    std::set<ByteVector> written;
    for (const Field& field : fields_) {
        const TagLib::String text = textIn(now, field.id);
        const bool isSame = text == textIn(original_, field.id);
        if (isSame) append(field.bytes);
        if (!isSame && !text.isEmpty() && !written.contains(field.id)) append(rendered(field.id, text));
        written.insert(field.id);
    }
    for (const auto& [id, text] : now) {
        if (!written.contains(id) && !text.isEmpty()) append(rendered(id, text));
    }
    if (out.isEmpty() && fields_.empty()) return content_;
    if (out.isEmpty() && tail_.isEmpty()) return {};
    return ByteVector("INFO", markSize).append(out).append(tail_);
}

}  // namespace zal
