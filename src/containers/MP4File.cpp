#include "containers/MP4File.h"

#include "base/Endian.h"
#include "base/Limits.h"
#include "id3/TagLibBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <optional>

namespace zal {

namespace {

using TagLib::ByteVector;

constexpr std::uint64_t headerSize = 8;
constexpr std::uint64_t wideHeaderSize = 16;
constexpr std::uint64_t lengthMax = std::uint64_t{1} << 62;  // so that sums of two places do not overflow
constexpr std::uint32_t numberMax = std::numeric_limits<std::uint32_t>::max();
constexpr unsigned room = 1024;  // a growing list ends on a multiple of it

constexpr std::string_view containers[] = {"moov", "udta", "mdia", "meta", "stbl",
                                           "minf", "moof", "traf", "trak", "mfra"};
constexpr std::string_view remembered[] = {"moov", "udta", "meta", "ilst", "free", "stco",
                                           "co64", "tfhd", "tfra", "saio", "stbl"};
// A "meta" that begins with one of these has no version and flags in front.
constexpr std::string_view metaChildren[] = {"hdlr", "ilst", "mhdr", "ctry", "lang"};

template <typename Names>
bool isAmong(const Names& names, std::string_view name) {
    return std::ranges::find(names, name) != std::end(names);
}

ByteVector bytesAt(TagLibStream& stream, std::uint64_t position, std::uint64_t length) {
    stream.seek(static_cast<long>(position));
    return stream.readBlock(length);
}

class AtomWalk {
  public:
    explicit AtomWalk(TagLibStream& stream)
        : stream_(stream), fileEnd_(static_cast<std::uint64_t>(stream.length())) {}

    MP4Walk walk() {
        std::uint64_t position = 0;
        while (!result_.isTooMuch) {
            leaveContainersBefore(position);
            const std::uint64_t end = around_.empty() ? fileEnd_ : around_.back().atom.end();
            if (around_.empty() && position + headerSize > fileEnd_) break;
            MP4Atom atom;
            if (!readHeader(position, end, atom)) {
                if (around_.empty()) break;
                position = end;  // a terminator, or what is no atom
                continue;
            }
            if (++count_ > limits::mp4Atoms) result_.isTooMuch = true;
            position = enter(atom);
        }
        return result_;
    }

  private:
    static constexpr const char* noLength = "an atom has no right length";

    struct Level {
        MP4Atom atom;
        std::size_t index;  // among those that are remembered
    };

    void leaveContainersBefore(std::uint64_t position) {
        while (!around_.empty() && position >= around_.back().atom.end()) {
            around_.pop_back();
        }
    }

    bool fail(const char* reason) {
        if (result_.damage.empty()) result_.damage = reason;
        return false;
    }

    // False for what is no atom: behind the last one in a "udta", QuickTime puts a length of 0.
    bool readHeader(std::uint64_t position, std::uint64_t end, MP4Atom& atom) {
        std::array<std::uint8_t, wideHeaderSize> bytes{};
        const std::size_t count = stream_.readAt(position, bytes);
        if (end - position < headerSize || count < headerSize) return isEndMark(bytes, end - position);
        ByteReader reader(bytes);
        atom.place = position;
        atom.length = reader.u32be();
        const ZALDataView name = reader.take(4);
        std::copy(name.begin(), name.end(), atom.nameBytes.begin());
        if (atom.length == 0) {
            // To the end of the file, which only the last atom may say.
            if (!around_.empty())
                return end - position > headerSize ? fail(noLength) : isEndMark(bytes, end - position);
            atom.length = end - position;
        } else if (atom.length == 1) {
            atom.header = wideHeaderSize;
            const std::uint64_t upper = reader.u32be();
            atom.length = upper << 32 | reader.u32be();
        }
        if (atom.length < atom.header || atom.length > lengthMax) return fail(noLength);
        const bool isCutAudio = around_.empty() && !isAmong(containers, atom.name());
        if (atom.end() > end && !isCutAudio) return fail("an atom is longer than the one around it");
        return true;
    }

    bool isEndMark(const std::array<std::uint8_t, wideHeaderSize>& bytes, std::uint64_t left) {
        const auto few = static_cast<std::ptrdiff_t>(std::min<std::uint64_t>(left, 4));
        const bool isZero =
            std::all_of(bytes.begin(), bytes.begin() + few, [](std::uint8_t byte) { return byte == 0; });
        return isZero ? false : fail("its atoms do not fill the one around them");
    }

    std::uint64_t enter(MP4Atom atom) {
        const std::size_t own = result_.atoms.size();
        atom.parent = around_.empty() ? own : around_.back().index;
        const bool isContainer = isAmong(containers, atom.name());
        const bool isRemembered = isContainer || isAmong(remembered, atom.name());
        if (isRemembered) result_.atoms.push_back(atom);
        if (!isContainer) return atom.end();
        if (around_.size() == limits::mp4Nesting) result_.isTooMuch = true;
        around_.push_back({atom, own});
        return firstChild(atom);
    }

    std::uint64_t firstChild(const MP4Atom& atom) {
        if (atom.name() != "meta") return atom.content();
        const ByteVector start = bytesAt(stream_, atom.content(), headerSize);
        const bool isBare = start.size() == headerSize && isAmong(metaChildren, {start.data() + 4, 4});
        return atom.content() + (isBare ? 0 : 4);
    }

    TagLibStream& stream_;
    const std::uint64_t fileEnd_;
    MP4Walk result_;
    std::vector<Level> around_;
    std::size_t count_ = 0;
};

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

const MP4Atom* MP4Walk::child(const MP4Atom* parent, std::string_view name) const {
    for (std::size_t i = 0; i < atoms.size(); ++i) {
        const bool isThere = parent != nullptr ? atoms[i].parent != i && &atoms[atoms[i].parent] == parent
                                               : atoms[i].parent == i;
        if (isThere && atoms[i].name() == name) return &atoms[i];
    }
    return nullptr;
}

MP4Walk walkMP4(TagLibStream& stream) {
    return AtomWalk(stream).walk();
}

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
        hasItems ? bytesAt(stream_, path.back().content(), path.back().length - path.back().header)
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
    const bool isWide = atom.header == wideHeaderSize;
    if (!isWide && length > numberMax) return false;
    const ByteVector bytes = isWide ? ByteVector::fromLongLong(static_cast<long long>(length))
                                    : ByteVector::fromUInt(static_cast<unsigned>(length));
    const bool saysRest = bytesAt(stream_, atom.place, 4).toUInt() == 0;
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
    ByteVector content = bytesAt(stream_, atom.content(), atom.length - atom.header);
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
    if (bytesAt(stream_, list.content(), list.length - list.header) != content) return false;
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
