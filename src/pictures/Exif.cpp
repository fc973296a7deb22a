#include "pictures/Exif.h"

#include "pictures/TIFFBlock.h"

#include <algorithm>
#include <string_view>

namespace zal {

namespace {

constexpr std::uint16_t exifDirectoryTag = 0x8769;
constexpr std::uint16_t lensMakeTag = 0xA433;
constexpr std::uint8_t emptyBlock[] = {'M', 'M', 0, '*', 0, 0, 0, 0};

// An EXIF block taken apart as far as the lens make needs it.
struct Exif {
    TIFFBlock block;
    TIFFDirectory first;
    TIFFDirectory details;  // where the lens make lives; empty when the block has none
};

std::optional<Exif> exifFrom(ZALDataView bytes) {
    const auto block = TIFFBlock::of(bytes);
    const auto first = block ? block->firstDirectory() : std::nullopt;
    if (!first) return std::nullopt;
    Exif exif{*block, *first, {}};
    const TIFFEntry* pointer = first->find(exifDirectoryTag);
    const bool isPointer = pointer != nullptr && pointer->type == TIFFEntry::longType;
    if (const auto details = isPointer ? block->directoryAt(block->number(pointer->value)) : std::nullopt) {
        exif.details = *details;
    }
    return exif;
}

std::size_t even(std::size_t offset) {
    return offset + offset % 2;
}

// Where new directories go: behind everything, or over the old ones where those are at the end.
std::size_t tailOf(const Exif& exif) {
    std::size_t tail = exif.block.bytes().size();
    if (exif.first.end != tail) return tail;
    tail = exif.first.begin;
    if (exif.details.end != tail) return tail;
    tail = exif.details.begin;
    const TIFFEntry* make = exif.details.find(lensMakeTag);
    if (make == nullptr || make->count <= make->value.size()) return tail;
    const std::size_t text = exif.block.number(make->value);
    return text >= TIFFBlock::headerSize && even(text + make->count) == tail ? text : tail;
}

// Writes numbers in the order of the block that it extends.
class Writer {
  public:
    Writer(ZALData start, bool bigEndian) : data_(std::move(start)), bigEndian_(bigEndian) {}

    std::uint32_t offset() const { return static_cast<std::uint32_t>(data_.size()); }
    ZALData take() { return std::move(data_); }

    std::array<std::uint8_t, 4> ordered(std::uint32_t value) const {
        std::array<std::uint8_t, 4> bytes{};
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            bytes[bigEndian_ ? bytes.size() - 1 - i : i] = static_cast<std::uint8_t>(value >> (8 * i));
        }
        return bytes;
    }
    void u16(std::uint16_t value) {
        const auto bytes = ordered(value);
        append(ZALDataView(bytes).subspan(bigEndian_ ? 2 : 0, 2));
    }
    void u32(std::uint32_t value) { append(ordered(value)); }
    void append(ZALDataView bytes) { data_.insert(data_.end(), bytes.begin(), bytes.end()); }
    void align() { data_.resize(even(data_.size())); }
    void putAt(std::size_t at, std::uint32_t value) {
        std::ranges::copy(ordered(value), data_.begin() + static_cast<std::ptrdiff_t>(at));
    }

    // Appends a directory and returns its offset.
    std::uint32_t directory(const TIFFDirectory& directory) {
        const std::uint32_t begin = offset();
        u16(static_cast<std::uint16_t>(directory.entries.size()));
        for (const TIFFEntry& entry : directory.entries) {
            u16(entry.tag);
            u16(entry.type);
            u32(entry.count);
            append(entry.value);
        }
        u32(directory.next);
        return begin;
    }

    // Appends a text and returns the entry for it.
    TIFFEntry text(std::uint16_t tag, std::string_view text) {
        TIFFEntry entry{tag, TIFFEntry::textType, static_cast<std::uint32_t>(text.size() + 1), {}};
        if (entry.count <= entry.value.size()) {
            for (std::size_t i = 0; i < text.size(); ++i) {
                entry.value.at(i) = static_cast<std::uint8_t>(text[i]);
            }
            return entry;
        }
        entry.value = ordered(offset());
        data_.insert(data_.end(), text.begin(), text.end());
        data_.push_back(0);
        align();
        return entry;
    }

  private:
    ZALData data_;
    bool bigEndian_;
};

void removeEntry(TIFFDirectory& directory, std::uint16_t tag) {
    std::erase_if(directory.entries, [tag](const TIFFEntry& entry) { return entry.tag == tag; });
}

// Replaces the entry of this tag; entries are sorted by tag.
void setEntry(TIFFDirectory& directory, const TIFFEntry& entry) {
    removeEntry(directory, entry.tag);
    const auto place = std::ranges::find_if(
        directory.entries, [&entry](const TIFFEntry& other) { return other.tag > entry.tag; });
    directory.entries.insert(place, entry);
}

}  // namespace

ZALNullableString lensMakeOfExif(ZALDataView bytes) {
    const auto exif = exifFrom(bytes);
    const TIFFEntry* entry = exif ? exif->details.find(lensMakeTag) : nullptr;
    const auto text = entry != nullptr ? exif->block.textOf(*entry) : std::nullopt;
    if (!text) return std::nullopt;
    return ZALValidUTF8({reinterpret_cast<const char*>(text->data()), text->size()});
}

ZALData exifWithLensMake(ZALDataView bytes, const ZALNullableString& make) {
    auto exif = exifFrom(bytes);
    if (!exif) exif = Exif{*TIFFBlock::of(emptyBlock), {}, {}};
    const ZALDataView kept = exif->block.bytes().first(tailOf(*exif));
    Writer out({kept.begin(), kept.end()}, exif->block.bigEndian());
    out.align();

    removeEntry(exif->details, lensMakeTag);
    if (make) setEntry(exif->details, out.text(lensMakeTag, *make));
    if (exif->details.entries.empty() && exif->details.next == 0) {
        removeEntry(exif->first, exifDirectoryTag);
    } else {
        const std::uint32_t details = out.directory(exif->details);
        setEntry(exif->first, {exifDirectoryTag, TIFFEntry::longType, 1, out.ordered(details)});
    }
    if (exif->first.entries.empty() && exif->first.next == 0) return {};
    out.putAt(4, out.directory(exif->first));
    return out.take();
}

}  // namespace zal
