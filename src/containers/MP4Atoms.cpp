#include "containers/MP4Atoms.h"

#include "base/Endian.h"
#include "base/Limits.h"
#include "id3/TagLibStream.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

namespace zal {

namespace {

constexpr std::string_view containers[] = {"moov", "udta", "mdia", "meta", "ilst", "stbl",
                                           "minf", "moof", "traf", "trak", "stsd"};
// A "meta" that begins with one of these has no version and flags in front.
constexpr std::string_view metaChildren[] = {"hdlr", "ilst", "mhdr", "ctry", "lang"};
// What TagLib has to see for a save: the places of the audio, and the tag.
constexpr std::string_view updated[] = {"stco", "co64", "moof", "udta"};
constexpr std::int64_t terminatorLength = 4;

template <typename Names>
bool isAmong(const Names& names, std::string_view name) {
    return std::ranges::find(names, name) != std::end(names);
}

struct Atom {
    std::int64_t offset = 0;
    std::int64_t length = 0;
    std::int64_t header = 8;  // 16 with a length of 64 bits
    bool toEndOfFile = false;
    std::array<char, 4> nameBytes{};

    std::string_view name() const { return {nameBytes.data(), nameBytes.size()}; }
    std::int64_t end() const { return offset + length; }
    bool isContainer() const { return isAmong(containers, name()); }
};

// The bytes of a header, as far as the file has them.
class HeaderBytes {
  public:
    HeaderBytes(TagLibStream& stream, std::int64_t position, std::size_t length)
        : count_(stream.readAt(static_cast<unsigned long>(position), std::span(bytes_).first(length))) {}

    std::size_t size() const { return count_; }
    ByteReader reader() const { return ByteReader(std::span(bytes_).first(count_)); }
    std::array<char, 4> nameAt(std::size_t offset) const {
        std::array<char, 4> name{};
        if (offset + name.size() <= count_) std::copy_n(bytes_.begin() + offset, name.size(), name.begin());
        return name;
    }

  private:
    std::array<std::uint8_t, 16> bytes_{};
    std::size_t count_;
};

std::string_view textOf(const std::array<char, 4>& name) {
    return {name.data(), name.size()};
}

class AtomWalk {
  public:
    explicit AtomWalk(TagLibStream& stream) : stream_(stream), fileEnd_(stream.length()) {}

    MP4Structure structure() {
        std::int64_t position = 0;
        while (true) {
            leaveContainersBefore(position);
            if (around_.empty() && position + 8 > fileEnd_) break;
            Atom atom;
            if (++count_ > limits::mp4Atoms || !readHeader(position, atom)) return refused();
            if (isTerminator(atom)) {
                isUnseen_ = true;
                position += terminatorLength;
                continue;
            }
            if (!visit(atom)) return refused();
            if (!atom.isContainer()) {
                position = atom.end();
                continue;
            }
            position = firstChild(atom);
            around_.push_back(std::move(atom));
            if (around_.size() > limits::mp4Nesting) return refused();
        }
        return writable_ ? MP4Structure::writable : MP4Structure::readable;
    }

  private:
    // What TagLib does not see cannot harm it.
    MP4Structure refused() const { return isUnseen_ ? MP4Structure::readable : MP4Structure::refused; }

    // QuickTime ends a "udta" with a length of 0. TagLib takes it for an atom to the end of the file, and
    // sees nothing of what follows.
    bool isTerminator(const Atom& atom) const {
        return atom.toEndOfFile && !around_.empty() && around_.back().name() == "udta" &&
               atom.offset + terminatorLength == around_.back().end();
    }

    HeaderBytes read(std::int64_t position, std::size_t length) { return {stream_, position, length}; }

    void leaveContainersBefore(std::int64_t position) {
        while (!around_.empty() && position >= around_.back().end()) {
            if (position > around_.back().end()) writable_ = false;
            around_.pop_back();
        }
    }

    bool readHeader(std::int64_t position, Atom& atom) {
        const HeaderBytes bytes = read(position, 16);
        if (bytes.size() < 8) return false;
        ByteReader reader = bytes.reader();
        atom.offset = position;
        atom.length = reader.u32be();
        atom.nameBytes = bytes.nameAt(4);
        if (atom.length == 0) {
            atom.toEndOfFile = true;
            atom.length = fileEnd_ - position;
        } else if (atom.length == 1) {
            if (bytes.size() < 16) return false;
            reader.skip(4);
            atom.header = 16;
            const std::uint64_t upper = reader.u32be();
            atom.length = static_cast<std::int64_t>(upper << 32 | reader.u32be());
        }
        // The places of a file have fewer than 62 bits, so that sums of two of them do not overflow.
        return atom.length >= atom.header && atom.length < (std::int64_t{1} << 62);
    }

    std::int64_t firstChild(const Atom& atom) {
        const std::int64_t content = atom.offset + atom.header;
        if (atom.name() == "stsd") return content + 8;
        if (atom.name() != "meta") return content;
        return content + (isAmong(metaChildren, textOf(read(content, 8).nameAt(4))) ? 0 : 4);
    }

    // What saving relies on: TagLib rewrites lengths of 32 bits, counts on atoms lying within those around
    // them, and moves the places of the audio that it finds in some atoms.
    bool visit(const Atom& atom) {
        const bool container = atom.isContainer();
        if (isUnseen_ && isAmong(updated, atom.name())) writable_ = false;
        const std::int64_t limit = around_.empty() ? fileEnd_ : around_.back().end();
        // The last atom may be cut off, or may reach to the end, when nothing in it is looked at.
        const bool cutAudio = around_.empty() && !container;
        if (!cutAudio && (atom.end() > limit || atom.toEndOfFile)) writable_ = false;
        if (container && atom.header != 8) writable_ = false;
        if (around_.empty() && atom.name() == "moof") ++fragments_;
        if (atom.name() == "stco" && !holdsItsTable(atom, 4)) writable_ = false;
        if (atom.name() == "co64" && !holdsItsTable(atom, 8)) writable_ = false;
        if (atom.name() == "tfhd" && !hasMovableOffset(atom)) writable_ = false;
        return around_.empty() || around_.back().name() != "ilst" || holdsWholeValues(atom);
    }

    // A table with a larger count would be written far beyond its atom.
    bool holdsItsTable(const Atom& atom, std::int64_t entry) {
        if (atom.header != 8 || atom.length < 16) return false;
        const HeaderBytes count = read(atom.offset + 12, 4);
        return count.size() == 4 && 16 + count.reader().u32be() * entry <= atom.length;
    }

    // TagLib moves the places that the first fragment holds, not those of later ones.
    bool hasMovableOffset(const Atom& atom) {
        if (atom.header != 8 || atom.length < 16) return false;
        const HeaderBytes flags = read(atom.offset + 8, 4);
        if (flags.size() < 4 || (flags.reader().u32be() & 1) == 0) return flags.size() == 4;
        return atom.length >= 24 && fragments_ == 1;
    }

    // The values of an item. One that is shorter than its header would take the whole rest of the item as its
    // text, and so would the next one.
    bool holdsWholeValues(const Atom& item) {
        const std::int64_t end = std::min(item.end(), fileEnd_);
        std::int64_t position = item.offset + 8;
        while (position + 8 <= end) {
            const HeaderBytes header = read(position, 8);
            const std::int64_t length = header.reader().u32be();
            const bool last = header.size() < 8 || length < 12 || length > INT32_MAX;  // TagLib stops there
            if (last) return true;
            if (length < 16 && textOf(header.nameAt(4)) == "data") return false;
            if (++count_ > limits::mp4Atoms) return false;
            position += length;
        }
        return true;
    }

    TagLibStream& stream_;
    const std::int64_t fileEnd_;
    std::vector<Atom> around_;  // the containers that are open, the outermost one first
    std::size_t count_ = 0;
    std::size_t fragments_ = 0;
    bool isUnseen_ = false;  // behind the terminator of a "udta"
    bool writable_ = true;
};

}  // namespace

MP4Structure structureOfMP4(TagLibStream& stream) {
    return AtomWalk(stream).structure();
}

}  // namespace zal
