#include "files/MP4File.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <optional>

namespace zal {

namespace {

using TagLib::ByteVector;

constexpr std::uint64_t headerSize = MP4Atom::headerSize;
constexpr std::uint32_t numberMax = std::numeric_limits<std::uint32_t>::max();
constexpr unsigned room = 1024;  // a growing list ends on a multiple of it

template <typename Names>
bool isAmong(const Names& names, std::string_view name) {
    return std::ranges::find(names, name) != std::end(names);
}

ByteVector atom(const char* name, const ByteVector& content) {
    return ByteVector::fromUInt(content.size() + static_cast<unsigned>(headerSize))
        .append(ByteVector(name, 4))
        .append(content);
}

ByteVector freeAtom(std::uint64_t length) {
    return atom("free", ByteVector(static_cast<unsigned>(length - headerSize), '\0'));
}

// A list, and free space behind it up to a round length.
ByteVector roomyList(const ByteVector& content) {
    ByteVector list = atom("ilst", content);
    const unsigned length = list.size() + static_cast<unsigned>(headerSize);
    return list.append(freeAtom((length + room - 1) / room * room - list.size()));
}

ByteVector handler() {
    return atom("hdlr", ByteVector(8, '\0').append(ByteVector("mdirappl", 8)).append(ByteVector(9, '\0')));
}

}  // namespace

std::unique_ptr<MP4File> MP4File::open(TagLibStream& stream) {
    std::unique_ptr<MP4File> file(new MP4File(stream));
    return file->read() ? std::move(file) : nullptr;
}

namespace {

// The atoms from "moov" to the list of items, as far as there are any.
std::vector<MP4Atom> pathToItems(const MP4Walk& walk) {
    std::vector<MP4Atom> path;
    const MP4Atom* last = nullptr;
    for (const char* name : {"moov", "udta", "meta", "ilst"}) {
        last = walk.child(last, name);
        if (last == nullptr) break;
        path.push_back(*last);
    }
    return path;
}

}  // namespace

bool MP4File::read() {
    walk_ = walkMP4(stream_);
    const std::vector<MP4Atom> path = pathToItems(walk_);
    if (walk_.isTooMuch || path.empty()) return false;
    const bool hasItems = path.size() == 4;
    if (hasItems && path.back().length > numberMax) return false;
    items_ = std::make_unique<MP4Items>(
        hasItems ? stream_.bytesAt(path.back().content(), path.back().length - path.back().header)
                 : ByteVector());
    return !items_->isTooMuch();
}

// Writing

MP4File::Edit MP4File::editInPlace(const MP4Atom& list, const ByteVector& content) const {
    const ByteVector bytes = atom("ilst", content);
    Edit edit{list.place, list.length, bytes, {}};
    const auto behind = std::ranges::find_if(walk_.atoms, [&list](const MP4Atom& other) {
        return other.place == list.end() && other.name() == "free";
    });
    const bool hasFree = behind != walk_.atoms.end() && walk_.atoms[behind->parent].name() == "meta";
    if (hasFree) edit.replaced += behind->length;
    if (bytes.size() == edit.replaced) return edit;
    if (bytes.size() + headerSize > edit.replaced) {
        edit.bytes = roomyList(content);
    } else {
        edit.bytes.append(freeAtom(edit.replaced - bytes.size()));
    }
    return edit;
}

MP4File::Edit MP4File::edit(const ByteVector& content) const {
    std::vector<MP4Atom> path = pathToItems(walk_);
    if (path.size() == 4) {
        Edit edit = editInPlace(path.back(), content);
        path.pop_back();
        edit.around = std::move(path);
        return edit;
    }
    Edit edit{path.back().end(), 0, roomyList(content), {}};
    if (path.size() < 3) edit.bytes = atom("meta", ByteVector(4, '\0').append(handler()).append(edit.bytes));
    if (path.size() < 2) edit.bytes = atom("udta", edit.bytes);
    // A "udta" can end with a mark, behind which nobody looks.
    if (path.size() == 2) edit.place = path.back().content();
    edit.around = std::move(path);
    return edit;
}

std::string MP4File::write() {
    written_.reset();
    const ByteVector content = items_->merged();
    if (content == items_->content()) return {};
    if (!walk_.damage.empty()) return "its audio would not be found again: " + walk_.damage;
    if (content.size() > numberMax - 4 * room) return "its items would be too many";
    const Edit edit = this->edit(content);
    const std::uint64_t shift = edit.bytes.size() - edit.replaced;
    if (shift != 0) {
        if (std::string reason = movePlaces(edit.place + edit.replaced, shift); !reason.empty())
            return reason;
        for (const MP4Atom& atom : edit.around) {
            if (!setLength(atom, atom.length + shift))
                return "an atom would be longer than its length can say";
        }
    }
    stream_.insert(edit.bytes, edit.place, edit.replaced);
    written_ = content;
    return isAsWritten(content) ? "" : "its atoms would not stay as they are";
}

bool MP4File::setLength(const MP4Atom& atom, std::uint64_t length) {
    const bool isWide = atom.header == MP4Atom::wideHeaderSize;
    if (!isWide && length > numberMax) return false;
    const ByteVector bytes = isWide ? ByteVector::fromLongLong(static_cast<long long>(length))
                                    : ByteVector::fromUInt(static_cast<unsigned>(length));
    const bool saysRest = stream_.bytesAt(atom.place, 4).toUInt() == 0;
    if (saysRest) return true;
    stream_.seek(static_cast<long>(atom.place + (isWide ? headerSize : 0)));
    stream_.writeBlock(bytes);
    return true;
}

// Every place in the file from a point on is another one afterwards.
std::string MP4File::movePlaces(std::uint64_t from, std::uint64_t shift) {
    for (const MP4Atom& atom : walk_.atoms) {
        if (std::string reason = moveTable(atom, from, shift); !reason.empty()) return reason;
    }
    return {};
}

namespace {

// The places that an atom holds: where the first stands in its content, how many there are, how far apart,
// and how wide each is.
struct PlaceTable {
    std::uint64_t first = 0;
    std::uint64_t count = 0;
    std::uint64_t step = 0;
    unsigned width = 4;
};

std::optional<PlaceTable> placesIn(const MP4Atom& atom, std::string_view parent, const ByteVector& content) {
    const auto word = [&content](unsigned at) { return content.size() >= at + 4 ? content.toUInt(at) : 0; };
    const unsigned version = content.isEmpty() ? 0 : static_cast<std::uint8_t>(content[0]);
    const unsigned flags = word(0) & 0xFFFFFF;
    if (atom.name() == "stco") return PlaceTable{8, word(4), 4, 4};
    if (atom.name() == "co64") return PlaceTable{8, word(4), 8, 8};
    if (atom.name() == "tfhd") return PlaceTable{8, flags & 1, 8, 8};
    if (atom.name() == "tfra") {
        const unsigned width = version == 0 ? 4 : 8;
        const unsigned sizes = word(8);
        const unsigned numbers = 3 + (sizes >> 4 & 3) + (sizes >> 2 & 3) + (sizes & 3);
        return PlaceTable{16 + width, word(12), 2 * width + numbers, width};
    }
    // In a fragment its places are counted from there.
    if (atom.name() == "saio" && parent == "stbl") {
        const unsigned width = version == 0 ? 4 : 8;
        const unsigned head = (flags & 1) != 0 ? 12 : 4;
        return PlaceTable{head + 4, word(head), width, width};
    }
    return std::nullopt;
}

}  // namespace

std::string MP4File::moveTable(const MP4Atom& atom, std::uint64_t from, std::uint64_t shift) {
    constexpr std::string_view names[] = {"stco", "co64", "tfhd", "tfra", "saio"};
    if (!isAmong(names, atom.name())) return {};
    if (atom.length > numberMax) return "a table of places is too long";
    ByteVector content = stream_.bytesAt(atom.content(), atom.length - atom.header);
    const auto table = placesIn(atom, walk_.atoms[atom.parent].name(), content);
    if (!table) return {};
    if (table->count > 0 && table->first + (table->count - 1) * table->step + table->width > content.size())
        return "a table of places is longer than its atom";
    bool isChanged = false;
    for (std::uint64_t i = 0; i < table->count; ++i) {
        const auto at = static_cast<unsigned>(table->first + i * table->step);
        const bool isWide = table->width == 8;
        const std::uint64_t old =
            isWide ? static_cast<std::uint64_t>(content.toLongLong(at)) : content.toUInt(at);
        if (old < from) continue;
        const std::uint64_t now = old + shift;
        if (!isWide && now > numberMax) return "a place would be beyond what its table can say";
        const ByteVector bytes = isWide ? ByteVector::fromLongLong(static_cast<long long>(now))
                                        : ByteVector::fromUInt(static_cast<unsigned>(now));
        std::copy(bytes.begin(), bytes.end(), content.begin() + at);
        isChanged = true;
    }
    if (!isChanged) return {};
    stream_.seek(static_cast<long>(atom.content()));
    stream_.writeBlock(content);
    return {};
}

bool MP4File::isAsWritten(const ByteVector& content) {
    walkAfter_ = walkMP4(stream_);
    const std::vector<MP4Atom> path = pathToItems(walkAfter_);
    if (!walkAfter_.damage.empty() || path.size() != 4) return false;
    const MP4Atom& list = path.back();
    if (stream_.bytesAt(list.content(), list.length - list.header) != content) return false;
    // All others are there, in their order and as long as they were.
    const auto others = [](const MP4Walk& walk) {
        constexpr std::string_view changed[] = {"moov", "udta", "meta", "ilst", "free"};
        std::vector<std::pair<std::string_view, std::uint64_t>> out;
        for (const MP4Atom& atom : walk.atoms) {
            if (!isAmong(changed, atom.name())) out.emplace_back(atom.name(), atom.length);
        }
        return out;
    };
    return others(walkAfter_) == others(walk_);
}

void MP4File::accept() {
    if (!written_) return;
    items_->accept(*written_);
    written_.reset();
    walk_ = std::move(walkAfter_);
}

}  // namespace zal
