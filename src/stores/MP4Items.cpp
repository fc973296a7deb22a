#include "stores/MP4Items.h"

#include "base/Endian.h"
#include "base/Limits.h"
#include "base/Unicode.h"
#include "taglib/TagLibBytes.h"
#include "taglib/TagLibText.h"

#include <id3v1genres.h>
#include <mp4coverart.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string_view>

namespace zal {

namespace {

using TagLib::ByteVector;
using TagLib::MP4::CoverArt;
using TagLib::MP4::CoverArtList;
using TagLib::MP4::Item;
using TagLib::MP4::ItemMap;

constexpr unsigned headerSize = 8;
constexpr unsigned dataHeaderSize = 16;  // with type and locale
constexpr char freeFormMark[] = "----";
constexpr char genreName[] = "\251gen";

// Types of data.
constexpr int anyType = 0;
constexpr int utf8Type = 1;
constexpr int utf16Type = 2;
constexpr int integerType = 21;

enum class Kind { text, textOfAnyType, flag, byte, number16, number32, number64, pair, shortPair, covers };

Kind kindOf(std::string_view name) {
    static const std::map<std::string_view, Kind> kinds{
        {"cpil", Kind::flag},        {"pgap", Kind::flag},          {"pcst", Kind::flag},
        {"hdvd", Kind::flag},        {"shwm", Kind::flag},          {"stik", Kind::byte},
        {"rtng", Kind::byte},        {"akID", Kind::byte},          {"tmpo", Kind::number16},
        {"\251mvi", Kind::number16}, {"\251mvc", Kind::number16},   {"tvsn", Kind::number32},
        {"tves", Kind::number32},    {"cnID", Kind::number32},      {"sfID", Kind::number32},
        {"atID", Kind::number32},    {"geID", Kind::number32},      {"cmID", Kind::number32},
        {"plID", Kind::number64},    {"trkn", Kind::pair},          {"disk", Kind::shortPair},
        {"covr", Kind::covers},      {"purl", Kind::textOfAnyType}, {"egid", Kind::textOfAnyType}};
    const auto found = kinds.find(name);
    return found != kinds.end() ? found->second : Kind::text;
}

std::string textIn(ZALDataView bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// One atom in an item.
struct Part {
    std::string name;
    int type = 0;  // of data
    ByteVector content;
};

std::size_t numberOfParts(const ByteVector& item) {
    std::size_t count = 0;
    for (unsigned at = headerSize; at + headerSize <= item.size(); ++count) {
        const std::uint32_t size = item.toUInt(at);
        if (size < headerSize || size > item.size() - at) break;
        at += size;
    }
    return count;
}

std::vector<Part> partsOf(const ByteVector& item) {
    std::vector<Part> parts;
    for (unsigned at = headerSize; at + headerSize <= item.size();) {
        const std::uint32_t size = item.toUInt(at);
        if (size < headerSize || size > item.size() - at) break;
        Part part{std::string(item.mid(at + 4, 4).data(), 4), 0, {}};
        const unsigned head = part.name == "data" ? dataHeaderSize : headerSize + 4;
        if (size >= head) {
            if (part.name == "data") part.type = static_cast<int>(item.toUInt(at + headerSize) & 0xFFFFFF);
            part.content = item.mid(at + head, size - head);
            parts.push_back(std::move(part));
        }
        at += size;
    }
    return parts;
}

TagLib::String textOf(const ByteVector& content, int type) {
    const ZALDataView bytes = viewOf(content);
    if (type == utf16Type) return TagLibString(utf8FromUTF16Bytes(bytes));
    const std::string text = textIn(bytes);
    return {text, isValidUTF8(text) ? TagLib::String::UTF8 : TagLib::String::Latin1};
}

// Whether data that nobody calls a text is one.
bool looksLikeText(const ByteVector& content) {
    return isValidUTF8(textIn(viewOf(content))) &&
           std::ranges::all_of(viewOf(content),
                               [](std::uint8_t byte) { return byte >= 0x20 || byte == '\n'; });
}

bool isText(const Part& part, bool isKnownText) {
    if (part.type == utf8Type || part.type == utf16Type) return true;
    return part.type == anyType && isKnownText && looksLikeText(part.content);
}

std::int64_t numberOf(const ByteVector& content) {
    std::int64_t number = 0;
    for (const std::uint8_t byte : viewOf(content)) {
        number = static_cast<std::int64_t>(static_cast<std::uint64_t>(number) << 8 | byte);
    }
    return number;
}

std::vector<Part> dataOf(const ByteVector& item) {
    std::vector<Part> parts = partsOf(item);
    std::erase_if(parts, [](const Part& part) { return part.name != "data"; });
    return parts;
}

std::optional<Item> coversOf(const std::vector<Part>& data) {
    CoverArtList covers;
    for (const Part& part : data) {
        const bool isPicture = part.type == CoverArt::JPEG || part.type == CoverArt::PNG ||
                               part.type == CoverArt::BMP || part.type == CoverArt::GIF ||
                               part.type == CoverArt::Unknown;
        if (isPicture) covers.append(CoverArt(static_cast<CoverArt::Format>(part.type), part.content));
    }
    return Item(covers);
}

Item joinedCovers(const Item& one, const Item& other) {
    CoverArtList covers = one.toCoverArtList();
    covers.append(other.toCoverArtList());
    return covers;
}

std::optional<Item> textsOf(const std::vector<Part>& data, bool isKnownText) {
    TagLib::StringList texts;
    for (const Part& part : data) {
        if (isText(part, isKnownText)) texts.append(textOf(part.content, part.type));
    }
    return texts.isEmpty() ? std::nullopt : std::optional(Item(texts));
}

std::optional<Item> freeFormOf(const std::vector<Part>& data) {
    if (auto texts = textsOf(data, true)) return texts;
    TagLib::ByteVectorList values;
    for (const Part& part : data) {
        values.append(part.content);
    }
    if (values.isEmpty()) return std::nullopt;
    Item item(values);
    item.setAtomDataType(static_cast<TagLib::MP4::AtomDataType>(data.front().type));
    return item;
}

std::optional<Item> pairOf(const ByteVector& content) {
    constexpr unsigned first = 2;
    if (content.size() < first + 4) return std::nullopt;
    return Item(static_cast<int>(content.toUShort(first)), static_cast<int>(content.toUShort(first + 2)));
}

// A genre of the ID3v1 list, by its number there and 1.
std::optional<Item> numberedGenre(const ByteVector& content) {
    const std::int64_t number = numberOf(content);
    const TagLib::String name =
        number > 0 && number <= 256 ? TagLib::ID3v1::genre(static_cast<int>(number - 1)) : TagLib::String();
    return name.isEmpty() ? std::nullopt : std::optional(Item(TagLib::StringList(name)));
}

// What TagLib holds of an item; null when it does not.
std::optional<Item> valueOf(const std::string& name, const ByteVector& bytes) {
    const std::vector<Part> data = dataOf(bytes);
    if (name == freeFormMark) return freeFormOf(data);
    const Kind kind = kindOf(name);
    if (kind == Kind::covers) return coversOf(data);
    if (data.empty()) return std::nullopt;
    const ByteVector& content = data.front().content;
    const std::int64_t number = numberOf(content);
    if (name == "gnre") return numberedGenre(content);
    switch (kind) {
        case Kind::flag:
            return Item(number != 0);
        case Kind::byte:
            return Item(static_cast<unsigned char>(number));
        case Kind::number16:
            return Item(static_cast<int>(number));
        case Kind::number32:
            return Item(static_cast<unsigned int>(number));
        case Kind::number64:
            return Item(static_cast<long long>(number));
        case Kind::pair:
        case Kind::shortPair:
            return pairOf(content);
        default:
            return textsOf(data, kind == Kind::textOfAnyType || name[0] == '\251' || name == "aART");
    }
}

// TagLib's name of an item; empty when it cannot have one. The numbered genre is one with the other.
TagLib::String nameOf(const std::string& name, const ByteVector& bytes) {
    if (name == "gnre") return latin1TagLibString(genreName);
    if (name != freeFormMark) return latin1TagLibString(name);
    const std::vector<Part> parts = partsOf(bytes);
    const auto textOfPart = [&parts](std::string_view part) -> std::optional<std::string> {
        const auto found = std::ranges::find(parts, part, &Part::name);
        if (found == parts.end()) return std::nullopt;
        const std::string text = textIn(viewOf(found->content));
        return isValidUTF8(text) && text.find('\0') == text.npos ? std::optional(text) : std::nullopt;
    };
    const auto mean = textOfPart("mean");
    const auto own = textOfPart("name");
    if (!mean || !own || mean->empty() || own->empty() || mean->find(':') != mean->npos) return {};
    return {"----:" + *mean + ":" + *own, TagLib::String::UTF8};
}

// Rendering

ByteVector atom(const ByteVector& name, const ByteVector& content) {
    return ByteVector::fromUInt(content.size() + headerSize).append(name).append(content);
}

ByteVector dataAtom(int type, const ByteVector& content) {
    return atom(
        "data",
        ByteVector::fromUInt(static_cast<unsigned>(type)).append(ByteVector(4, '\0')).append(content));
}

ByteVector renderedTexts(const Item& item, int type) {
    ByteVector out;
    for (const TagLib::String& text : item.toStringList()) {
        out.append(dataAtom(type, text.data(TagLib::String::UTF8)));
    }
    return out;
}

ByteVector renderedFreeForm(const std::string& name, const Item& item) {
    const std::size_t mean = name.find(':') + 1;
    const std::size_t end = name.find(':', mean);
    const auto named = [](const char* part, const std::string& text) {
        return atom(part,
                    ByteVector(4, '\0').append(ByteVector(text.data(), static_cast<unsigned>(text.size()))));
    };
    ByteVector out = named("mean", name.substr(mean, end - mean));
    out.append(named("name", name.substr(end + 1)));
    const TagLib::ByteVectorList values = item.toByteVectorList();
    for (const ByteVector& value : values) {
        out.append(dataAtom(item.atomDataType(), value));
    }
    return values.isEmpty() ? out.append(renderedTexts(item, utf8Type)) : out;
}

ByteVector renderedNumber(const Item& item, Kind kind) {
    switch (kind) {
        case Kind::flag:
            return ByteVector(1, item.toBool() ? '\1' : '\0');
        case Kind::byte:
            return ByteVector(1, static_cast<char>(item.toByte()));
        case Kind::number16:
            return ByteVector::fromShort(static_cast<short>(item.toInt()));
        case Kind::number32:
            return ByteVector::fromUInt(item.toUInt());
        default:
            return ByteVector::fromLongLong(item.toLongLong());
    }
}

ByteVector renderedPair(const Item& item, Kind kind) {
    const Item::IntPair pair = item.toIntPair();
    ByteVector out(2, '\0');
    out.append(ByteVector::fromShort(static_cast<short>(pair.first)));
    out.append(ByteVector::fromShort(static_cast<short>(pair.second)));
    return kind == Kind::pair ? out.append(ByteVector(2, '\0')) : out;
}

ByteVector renderedCovers(const Item& item) {
    ByteVector out;
    for (const CoverArt& cover : item.toCoverArtList()) {
        out.append(dataAtom(cover.format(), cover.data()));
    }
    return out;
}

// The atom of an item; empty for covers of which there are none.
ByteVector rendered(const TagLib::String& key, const Item& item) {
    if (key.startsWith("----:"))
        return atom(freeFormMark, renderedFreeForm(stringWithTagLibString(key), item));
    const ByteVector name = key.data(TagLib::String::Latin1);
    const Kind kind = kindOf(std::string_view(name.data(), name.size()));
    switch (kind) {
        case Kind::text:
            return atom(name, renderedTexts(item, utf8Type));
        case Kind::textOfAnyType:
            return atom(name, renderedTexts(item, anyType));
        case Kind::pair:
        case Kind::shortPair:
            return atom(name, dataAtom(anyType, renderedPair(item, kind)));
        case Kind::covers: {
            const ByteVector covers = renderedCovers(item);
            return covers.isEmpty() ? covers : atom(name, covers);
        }
        default:
            return atom(name, dataAtom(integerType, renderedNumber(item, kind)));
    }
}

bool isSameCover(const CoverArt& one, const CoverArt& other) {
    return one.format() == other.format() && one.data() == other.data();
}

// Whether both are rendered alike.
bool isSame(const TagLib::String& key, const Item& one, const Item& other) {
    if (key.startsWith("----:")) {
        return one.toStringList() == other.toStringList() &&
               one.toByteVectorList() == other.toByteVectorList() &&
               one.atomDataType() == other.atomDataType();
    }
    const ByteVector name = key.data(TagLib::String::Latin1);
    const Kind kind = kindOf(std::string_view(name.data(), name.size()));
    switch (kind) {
        case Kind::text:
        case Kind::textOfAnyType:
            return one.toStringList() == other.toStringList();
        case Kind::pair:
        case Kind::shortPair:
            return renderedPair(one, kind) == renderedPair(other, kind);
        case Kind::covers: {
            const CoverArtList before = one.toCoverArtList();
            const CoverArtList now = other.toCoverArtList();
            return std::equal(before.begin(), before.end(), now.begin(), now.end(), isSameCover);
        }
        default:
            return renderedNumber(one, kind) == renderedNumber(other, kind);
    }
}

}  // namespace

MP4Items::MP4Items(const ByteVector& content) : tag_(std::make_unique<TagLib::MP4::Tag>()) {
    read(content);
    if (isTooMuch_) return;
    for (const auto& [name, item] : values()) {
        tag_->setItem(name, item);
    }
    originals_ = tag_->itemMap();
}

void MP4Items::read(const ByteVector& content) {
    content_ = content;
    items_.clear();
    std::size_t count = 0;
    unsigned at = 0;
    while (content.size() - at >= headerSize && !isTooMuch_) {
        const std::uint32_t size = content.toUInt(at);
        if (size < headerSize || size > content.size() - at) break;
        const ByteVector bytes = content.mid(at, size);
        count += 1 + numberOfParts(bytes);
        isTooMuch_ = count > limits::mp4Atoms;
        if (isTooMuch_) return;
        items_.push_back({nameOf({bytes.mid(4, 4).data(), 4}, bytes), bytes});
        at += size;
    }
    tail_ = content.mid(at);
}

// The first item of a name counts, of covers all; the numbered genre only where there is no other.
ItemMap MP4Items::values() const {
    ItemMap items;
    for (const bool isNumbered : {false, true}) {
        for (const RawItem& raw : items_) {
            const std::string name(raw.bytes.mid(4, 4).data(), 4);
            if (raw.name.isEmpty() || (name == "gnre") != isNumbered) continue;
            const bool isThere = items.contains(raw.name);
            if (isThere && name != "covr") continue;
            const auto item = valueOf(name, raw.bytes);
            if (item) items[raw.name] = isThere ? joinedCovers(items[raw.name], *item) : *item;
        }
    }
    return items;
}

ByteVector MP4Items::merged() const {
    if (replacement_ != nullptr) {
        ByteVector out;
        for (const RawItem& item : *replacement_) {
            out.append(item.bytes);
        }
        return out;
    }
    const ItemMap& now = tag_->itemMap();
    std::map<TagLib::String, ByteVector> changed;  // empty for one that goes
    for (const auto& [name, item] : now) {
        const auto before = originals_.find(name);
        const bool isOld = before != originals_.end();
        if (isOld && isSame(name, before->second, item)) continue;
        if (ByteVector bytes = rendered(name, item); isOld || !bytes.isEmpty())
            changed[name] = std::move(bytes);
    }
    for (const auto& [name, item] : originals_) {
        if (!now.contains(name)) changed[name].clear();
    }
    if (changed.empty()) return content_;
    ByteVector out;
    std::set<TagLib::String> written;
    for (const RawItem& raw : items_) {
        const auto found = changed.find(raw.name);
        if (raw.name.isEmpty() || found == changed.end()) {
            out.append(raw.bytes);
        } else if (written.insert(raw.name).second) {
            out.append(found->second);
        }
    }
    for (const auto& [name, bytes] : changed) {
        if (!written.contains(name)) out.append(bytes);
    }
    return out.append(tail_);
}

void MP4Items::accept(const ByteVector& merged) {
    read(merged);
    originals_ = replacement_ != nullptr ? values() : tag_->itemMap();
    replacement_.reset();
}

void MP4Items::replaceBy(const MP4Items& other, bool (*leavesOut)(const TagLib::String& name)) {
    replacement_ = std::make_unique<std::vector<RawItem>>();
    for (const RawItem& item : other.items_) {
        if (item.name.isEmpty() || !leavesOut(item.name)) replacement_->push_back(item);
    }
}

}  // namespace zal
