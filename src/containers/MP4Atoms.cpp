#include "containers/MP4Atoms.h"

#include "base/Limits.h"

#include <algorithm>
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
    TagLib::ByteVector nameBytes;

    std::string_view name() const { return {nameBytes.data(), nameBytes.size()}; }
    std::int64_t end() const { return offset + length; }
    bool isContainer() const { return isAmong(containers, name()); }
};

class AtomWalk {
  public:
    explicit AtomWalk(TagLib::IOStream& stream) : stream_(stream), fileEnd_(stream.length()) {}

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

    TagLib::ByteVector read(std::int64_t position, unsigned long length) {
        stream_.seek(static_cast<long>(position));
        return stream_.readBlock(length);
    }

    void leaveContainersBefore(std::int64_t position) {
        while (!around_.empty() && position >= around_.back().end()) {
            if (position > around_.back().end()) writable_ = false;
            around_.pop_back();
        }
    }

    bool readHeader(std::int64_t position, Atom& atom) {
        const TagLib::ByteVector bytes = read(position, 16);
        if (bytes.size() < 8) return false;
        atom.offset = position;
        atom.length = bytes.toUInt(0U);
        atom.nameBytes = bytes.mid(4, 4);
        if (atom.length == 0) {
            atom.toEndOfFile = true;
            atom.length = fileEnd_ - position;
        } else if (atom.length == 1) {
            if (bytes.size() < 16) return false;
            atom.header = 16;
            atom.length = bytes.toLongLong(8U);
        }
        // The places of a file have fewer than 62 bits, so that sums of two of them do not overflow.
        return atom.length >= atom.header && atom.length < (std::int64_t{1} << 62);
    }

    std::int64_t firstChild(const Atom& atom) {
        const std::int64_t content = atom.offset + atom.header;
        if (atom.name() == "stsd") return content + 8;
        if (atom.name() != "meta") return content;
        const TagLib::ByteVector start = read(content, 8);
        const TagLib::ByteVector name = start.mid(4, 4);
        return content + (isAmong(metaChildren, std::string_view(name.data(), name.size())) ? 0 : 4);
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
        const TagLib::ByteVector count = read(atom.offset + 12, 4);
        return count.size() == 4 && 16 + count.toUInt(0U) * entry <= atom.length;
    }

    // TagLib moves the places that the first fragment holds, not those of later ones.
    bool hasMovableOffset(const Atom& atom) {
        if (atom.header != 8 || atom.length < 16) return false;
        const TagLib::ByteVector flags = read(atom.offset + 8, 4);
        if (flags.size() < 4 || (flags.toUInt(0U) & 1) == 0) return flags.size() == 4;
        return atom.length >= 24 && fragments_ == 1;
    }

    // The values of an item. One that is shorter than its header would take the whole rest of the item as its
    // text, and so would the next one.
    bool holdsWholeValues(const Atom& item) {
        const std::int64_t end = std::min(item.end(), fileEnd_);
        std::int64_t position = item.offset + 8;
        while (position + 8 <= end) {
            const TagLib::ByteVector header = read(position, 8);
            const std::int64_t length = header.toUInt(0U);
            const bool last = header.size() < 8 || length < 12 || length > INT32_MAX;  // TagLib stops there
            if (last) return true;
            if (length < 16 && header.containsAt("data", 4)) return false;
            if (++count_ > limits::mp4Atoms) return false;
            position += length;
        }
        return true;
    }

    TagLib::IOStream& stream_;
    const std::int64_t fileEnd_;
    std::vector<Atom> around_;  // the containers that are open, the outermost one first
    std::size_t count_ = 0;
    std::size_t fragments_ = 0;
    bool isUnseen_ = false;  // behind the terminator of a "udta"
    bool writable_ = true;
};

}  // namespace

MP4Structure structureOfMP4(TagLib::IOStream& stream) {
    return AtomWalk(stream).structure();
}

}  // namespace zal
