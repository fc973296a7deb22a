#include "walks/MP4Walk.h"

#include "base/Endian.h"
#include "base/Limits.h"

#include <algorithm>

namespace zal {

namespace {

constexpr std::uint64_t headerSize = MP4Atom::headerSize;
constexpr std::uint64_t wideHeaderSize = MP4Atom::wideHeaderSize;
constexpr std::uint64_t lengthMax = std::uint64_t{1} << 62;  // so that sums of two places do not overflow

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
        const TagLib::ByteVector start = stream_.bytesAt(atom.content(), headerSize);
        const bool isBare = start.size() == headerSize && isAmong(metaChildren, {start.data() + 4, 4});
        return atom.content() + (isBare ? 0 : 4);
    }

    TagLibStream& stream_;
    const std::uint64_t fileEnd_;
    MP4Walk result_;
    std::vector<Level> around_;
    std::size_t count_ = 0;
};

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

}  // namespace zal
