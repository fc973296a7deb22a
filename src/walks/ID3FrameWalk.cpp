#include "walks/ID3FrameWalk.h"

#include "base/Limits.h"
#include "platform/Inflation.h"
#include "taglib/TagLibBytes.h"

#include <id3v2synchdata.h>

#include <algorithm>
#include <optional>
#include <set>
#include <string_view>

namespace zal {

namespace {

using TagLib::ByteVector;
namespace SynchData = TagLib::ID3v2::SynchData;

std::uint32_t plainNumber(ZALDataView bytes) {
    std::uint32_t number = 0;
    for (const std::uint8_t byte : bytes) {
        number = number << 8 | byte;
    }
    return number;
}

// As TagLib reads it, without the vectors that its own function takes: with an octet of more than 7 bits it
// is a plain one.
std::uint32_t syncSafeNumber(ZALDataView bytes) {
    std::uint32_t number = 0;
    for (const std::uint8_t byte : bytes) {
        if (byte >= 0x80) return plainNumber(bytes);
        number = number << 7 | byte;
    }
    return number;
}

// The header of a frame: its id, its length, and what of its flags matters to who reads it.
struct FrameHeader {
    std::string_view id;
    std::uint32_t length = 0;
    std::uint32_t plainLength = 0;  // another one in tags of version 2.4 by programs that got it wrong
    bool isCompressed = false;
    bool isEncrypted = false;
    bool isUnsynchronised = false;
    bool hasContentLength = false;

    bool isChapter() const { return id == "CHAP" || id == "CTOC"; }
    bool isGenre() const { return id.starts_with("TCO") && (id.size() == 3 || id[3] == 'N' || id[3] == 0); }
    bool isLyrics() const { return id.starts_with("SLT") || id == "SYLT"; }
    /// TagLib keeps most of its bytes as they are.
    bool isPayload() const { return id == "APIC" || id == "GEOB" || id == "PRIV"; }
    /// TagLib makes a text of every part between two NULs.
    bool isText() const {
        static constexpr std::string_view others[] = {"IPL", "WFD", "WFE", "MVN", "MVI", "GRP", "GP1"};
        return id[0] == 'T' || std::ranges::count(others, id.substr(0, 3)) > 0;
    }
};

class Frames {
  public:
    explicit Frames(unsigned version) : version_(version) {}

    unsigned version() const { return version_; }
    std::size_t headerSize() const { return version_ < 3 ? 6 : 10; }

    /// The header at a place; null where TagLib finds no frame.
    std::optional<FrameHeader> headerAt(ZALDataView frames, std::size_t at) const {
        if (at >= frames.size() || frames.size() - at < headerSize() || !beginsWithID(frames, at)) return {};
        const ZALDataView bytes = frames.subspan(at, headerSize());
        const std::size_t idSize = version_ < 3 ? 3 : 4;
        FrameHeader header;
        header.id = {reinterpret_cast<const char*>(bytes.data()), idSize};
        header.plainLength = plainNumber(bytes.subspan(idSize, idSize));
        header.length = header.plainLength;
        if (version_ < 3) return header;
        const unsigned flags = bytes[9];
        const bool isOld = version_ == 3;
        header.isCompressed = (flags & (isOld ? 0x80U : 0x08U)) != 0;
        header.isEncrypted = (flags & (isOld ? 0x40U : 0x04U)) != 0;
        if (isOld) return header;
        header.isUnsynchronised = (flags & 0x02U) != 0;
        header.hasContentLength = (flags & 0x01U) != 0;
        header.length = syncSafeNumber(bytes.subspan(4, 4));
        return header;
    }

    /// True when the plain length is the one that leads to another frame.
    bool isPlainLength(ZALDataView frames, std::size_t at, const FrameHeader& header) const {
        const std::size_t content = at + headerSize();
        return header.length > 127 && !beginsWithID(frames, content + header.length) &&
               beginsWithID(frames, content + header.plainLength);
    }

  private:
    bool beginsWithID(ZALDataView frames, std::size_t at) const {
        const std::size_t idSize = version_ < 3 ? 3 : 4;
        if (at > frames.size() || frames.size() - at < idSize) return false;
        const ZALDataView id = frames.subspan(at, idSize);
        const auto isOfID = [](std::uint8_t c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); };
        // In version 2.3 some programs write the ids of 2.2, with a NUL behind them.
        return std::ranges::all_of(id.first(3), isOfID) &&
               (idSize == 3 || isOfID(id[3]) || (version_ == 3 && id[3] == 0));
    }

    unsigned version_;
};

}  // namespace

class FrameGuard::Walk {
  public:
    bool takes(ZALDataView frame, unsigned version) {
        frames_ = Frames(version);
        contentMax_ += (limits::id3ChapterNesting + 1) * std::uint64_t{frame.size()};
        const auto header = frames_.headerAt(frame, 0);
        if (!header) return true;
        const ZALDataView body = frame.subspan(frames_.headerSize());
        return ++count_ <= 2 * limits::id3Frames && isSafe(body, *header, body.size(), 0);
    }

  private:
    bool walk(ZALDataView frames, std::set<std::size_t> places, int depth) {
        if (depth > limits::id3ChapterNesting) return false;
        while (!places.empty()) {
            const std::size_t at = places.extract(places.begin()).value();
            const auto header = frames_.headerAt(frames, at);
            if (!header) continue;
            if (++count_ > 2 * limits::id3Frames) return false;
            // Both lengths are followed, so that the walk misses no frame; TagLib reads one of the contents.
            const bool isPlain = frames_.isPlainLength(frames, at, *header);
            for (const bool plain : {false, true}) {
                const std::size_t length = plain ? header->plainLength : header->length;
                const bool isOther = !plain || header->plainLength != header->length;
                if (!isOther || length == 0 || length > frames.size() - at) continue;
                places.insert(at + frames_.headerSize() + length);
                const bool isChosen = plain == isPlain || header->plainLength == header->length;
                if (isChosen && !isSafe(frames.subspan(at + frames_.headerSize()), *header, length, depth))
                    return false;
            }
        }
        return true;
    }

    // `body` is everything behind the frame's header: TagLib goes by what the frame says that its content is,
    // and by that alone.
    bool isSafe(ZALDataView body, const FrameHeader& header, std::size_t length, int depth) {
        ByteVector decoded;
        if (header.isUnsynchronised) {
            const ZALDataView stored = body.first(std::min(length, body.size()));
            decoded_ += stored.size();
            if (decoded_ > contentMax_) return false;
            decoded = SynchData::decode(TagLibBytes(stored));
            body = viewOf(decoded);
        }
        std::size_t size = length;
        if (header.isCompressed || header.hasContentLength) {
            const ZALDataView number = body.first(std::min<std::size_t>(4, body.size()));
            size = syncSafeNumber(number);
            body = body.subspan(number.size());
        }
        if (header.isCompressed && !header.isEncrypted) {
            // A chapter could become any number of frames.
            return !header.isChapter() && inflatesModestly(body, costOf(header));
        }
        const ZALDataView content = body.first(std::min(size, body.size()));
        if (!takesLittle(content, header)) return false;
        if (!header.isChapter() || header.isEncrypted) return true;
        const std::size_t embedded = behindHead(content, header.id == "CTOC");
        return searched_ <= searchMax() && walk(content, {embedded}, depth + 1);
    }

    // Adds up what frames hold: a content can be said to reach into the frames behind it.
    bool takesLittle(ZALDataView content, const FrameHeader& header) {
        content_ += content.size();
        if (header.isText() && !content.empty()) parts_ += partsOf(content);
        if (header.isGenre()) genres_ += content.size();
        if (header.isLyrics()) followLines(content);
        return content_ <= contentMax_ && searched_ <= searchMax() && parts_ <= limits::id3TextParts &&
               genres_ <= limits::id3Genres;
    }

    // Behind encoding, language and two octets: a description, then texts with a time behind each.
    void followLines(ZALDataView content) {
        const bool isWide = !content.empty() && content[0] != 0 && content[0] != 3;
        const auto behind = [&](std::size_t at) {
            return isWide ? behindWideText(content, at) : behindText(content, at);
        };
        for (std::size_t at = behind(6); at < content.size() && searched_ <= searchMax();) {
            at = behind(at) + 4;
        }
    }

    static std::size_t partsOf(ZALDataView text) {
        const bool isWide = text[0] == 1 || text[0] == 2;
        if (!isWide) return static_cast<std::size_t>(std::ranges::count(text, 0));
        std::size_t parts = 0;
        for (std::size_t at = 1; at + 1 < text.size(); at += 2) {
            parts += text[at] == 0 && text[at + 1] == 0;
        }
        return parts;
    }

    // Where the frames in a chapter begin: behind its id and four times, or, in a table, behind the ids of
    // its entries. A text without an end has no length, as TagLib reads it.
    std::size_t behindHead(ZALDataView content, bool isTable) {
        std::size_t at = behindText(content, 0);
        if (!isTable) return at + 16;
        const unsigned entries = at + 1 < content.size() ? content[at + 1] : 0;
        at += 2;
        for (unsigned entry = 0; entry < entries; ++entry) {
            at = behindText(content, at);
        }
        return at;
    }

    std::size_t behindText(ZALDataView content, std::size_t at) {
        if (at >= content.size()) return at;
        const auto end = std::find(content.begin() + static_cast<std::ptrdiff_t>(at), content.end(), 0);
        if (end != content.end()) return static_cast<std::size_t>(end - content.begin()) + 1;
        searched_ += content.size() - at;
        return at;
    }

    std::size_t behindWideText(ZALDataView content, std::size_t at) {
        if (at >= content.size()) return at;
        for (std::size_t end = at; end + 1 < content.size(); end += 2) {
            if (content[end] == 0 && content[end + 1] == 0) return end + 2;
        }
        searched_ += content.size() - at;
        return at;
    }

    // What a byte takes when it is made: one letter between two NULs is a text of its own.
    static std::uint64_t costOf(const FrameHeader& header) {
        if (header.isGenre() || header.isLyrics()) return limits::id3Inflated / limits::id3Genres;
        return header.isPayload() ? 2 : 128;
    }

    // `cost` is what a byte takes when it is made.
    bool inflatesModestly(ZALDataView stream, std::uint64_t cost) {
        InflationCount inflation;
        for (std::size_t size = 1024; !stream.empty(); size *= 2) {
            const ZALDataView block = stream.first(std::min(size, stream.size()));
            stream = stream.subspan(block.size());
            const std::uint64_t before = inflation.made();
            const bool goesOn = inflation.take(block, limits::id3Inflated);
            inflated_ += block.size() + (inflation.made() - before) * cost;
            if (inflated_ > limits::id3Inflated) return false;
            if (!goesOn) break;
        }
        return true;
    }

    std::uint64_t searchMax() const { return contentMax_ + (1 << 20); }

    Frames frames_{4};
    std::uint64_t contentMax_ = 0;
    unsigned count_ = 0;
    std::uint64_t content_ = 0;
    std::uint64_t decoded_ = 0;
    std::uint64_t searched_ = 0;  // in vain, for the end of a text
    std::uint64_t parts_ = 0;
    std::uint64_t genres_ = 0;
    std::uint64_t inflated_ = 0;
};

FrameGuard::FrameGuard() : walk_(std::make_unique<Walk>()) {}
FrameGuard::~FrameGuard() = default;

bool FrameGuard::takes(ZALDataView frame, unsigned version) {
    return walk_->takes(frame, version);
}

}  // namespace zal
