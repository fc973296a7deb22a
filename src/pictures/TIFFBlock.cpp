#include "pictures/TIFFBlock.h"

#include "base/Endian.h"
#include "pictures/PictureFormats.h"

#include <algorithm>

namespace zal {

namespace {

constexpr std::size_t entrySize = 12;

}  // namespace

const TIFFEntry* TIFFDirectory::find(std::uint16_t tag) const {
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [tag](const TIFFEntry& entry) { return entry.tag == tag; });
    return found != entries.end() ? &*found : nullptr;
}

std::optional<TIFFBlock> TIFFBlock::of(ZALDataView bytes) {
    const bool big = beginsWith(bytes, std::string_view("MM\0*", 4));
    const bool little = beginsWith(bytes, std::string_view("II*\0", 4));
    if ((!big && !little) || bytes.size() < headerSize) return std::nullopt;
    return TIFFBlock(bytes, big);
}

std::uint32_t TIFFBlock::number(ZALDataView bytes) const {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        value = value << 8 | bytes[bigEndian_ ? i : bytes.size() - 1 - i];
    }
    return value;
}

std::optional<TIFFDirectory> TIFFBlock::directoryAt(std::uint32_t offset) const {
    if (offset < headerSize || offset > bytes_.size()) return std::nullopt;
    ByteReader reader(bytes_.subspan(offset));
    const std::size_t count = number(reader.take(2));
    if (count * entrySize + 4 > reader.remaining()) return std::nullopt;
    TIFFDirectory directory;
    directory.begin = offset;
    directory.entries.resize(count);
    for (TIFFEntry& entry : directory.entries) {
        entry.tag = static_cast<std::uint16_t>(number(reader.take(2)));
        entry.type = static_cast<std::uint16_t>(number(reader.take(2)));
        entry.count = number(reader.take(4));
        std::ranges::copy(reader.take(4), entry.value.begin());
    }
    directory.next = number(reader.take(4));
    directory.end = offset + reader.offset();
    return directory;
}

ZALDataView TIFFBlock::valueOf(const TIFFEntry& entry, std::size_t size) const {
    if (size <= entry.value.size()) return ZALDataView(entry.value).first(size);
    const std::size_t offset = number(entry.value);
    if (offset > bytes_.size() || size > bytes_.size() - offset) return {};
    return bytes_.subspan(offset, size);
}

std::optional<ZALDataView> TIFFBlock::textOf(const TIFFEntry& entry) const {
    const ZALDataView value = valueOf(entry, entry.count);
    if (entry.type != TIFFEntry::textType || value.size() != entry.count) return std::nullopt;
    return value.first(static_cast<std::size_t>(std::ranges::find(value, 0) - value.begin()));
}

std::vector<std::uint32_t> TIFFBlock::numbersOf(const TIFFEntry& entry) const {
    const std::size_t width = entry.type == TIFFEntry::byteType    ? 1
                              : entry.type == TIFFEntry::shortType ? 2
                              : entry.type == TIFFEntry::longType  ? 4
                                                                   : 0;
    const ZALDataView value = valueOf(entry, entry.count * width);
    std::vector<std::uint32_t> numbers;
    for (std::size_t i = 0; width > 0 && i + width <= value.size(); i += width) {
        numbers.push_back(number(value.subspan(i, width)));
    }
    return numbers;
}

}  // namespace zal
