#include "serato/CueEntries.h"

#include "base/Endian.h"
#include "base/Unicode.h"
#include "platform/Log.h"

#include <algorithm>
#include <array>

namespace zal {

std::optional<std::size_t> findNextCue(ZALDataView bytes) {
    static constexpr std::array<std::uint8_t, 4> name{'C', 'U', 'E', 0};
    static constexpr std::size_t shortest = 9;
    if (bytes.data() == nullptr) {
        log("NULL buffer passed to nextCue!\n");
        return std::nullopt;
    }
    if (bytes.size() < shortest) return std::nullopt;
    const ZALDataView searched = bytes.first(bytes.size() - shortest + name.size());
    const auto hit = std::search(searched.begin(), searched.end(), name.begin(), name.end());
    if (hit == searched.end()) return std::nullopt;
    return static_cast<std::size_t>(hit - searched.begin());
}

std::vector<LoopEntry> loopEntries(ZALDataView payload) {
    static constexpr std::array<std::uint8_t, 5> loopName{'L', 'O', 'O', 'P', 0};
    std::vector<LoopEntry> loops;
    std::size_t at = 0;
    while (true) {
        const ZALDataView rest = payload.subspan(at);
        const auto nameEnd = std::find(rest.begin(), rest.end(), 0);
        if (nameEnd == rest.begin() || nameEnd == rest.end()) return loops;
        const auto nameSize = static_cast<std::size_t>(nameEnd - rest.begin()) + 1;
        ByteReader in(rest.subspan(nameSize));
        const std::uint32_t size = in.u32be();
        if (in.failed() || size > in.remaining()) return loops;
        const std::size_t end = at + nameSize + 4 + size;
        if (std::equal(loopName.begin(), loopName.end(), rest.begin(), nameEnd + 1)) {
            loops.push_back({at, end});
        }
        at = end;
    }
}

std::optional<CueEntry> nextCueEntry(ZALDataView payload, std::size_t from,
                                     const std::vector<LoopEntry>& loops) {
    while (from < payload.size()) {
        const auto hit = findNextCue(payload.subspan(from));
        if (!hit) return std::nullopt;
        const std::size_t offset = from + *hit;
        const auto endsBefore = [](const LoopEntry& loop, std::size_t place) { return loop.end <= place; };
        const auto loop = std::lower_bound(loops.begin(), loops.end(), offset, endsBefore);
        if (loop == loops.end() || loop->offset > offset) {
            return CueEntry{offset, std::uint64_t{ByteReader(payload.subspan(offset + 4)).u32be()} + 8};
        }
        from = loop->end;
    }
    return std::nullopt;
}

ZALData carriedEntries(ZALDataView payload, bool withLoops) {
    const std::vector<LoopEntry> loops = loopEntries(payload);
    std::vector<LoopEntry> cut;
    std::size_t cutSize = 0;
    std::size_t from = 0;
    while (const auto entry = nextCueEntry(payload, from, loops)) {
        if (!entry->fits(payload)) {
            logDamage(fmt::format("invalid cue point size: {} at offset {} (length: {})", entry->size,
                                  static_cast<const void*>(&payload[entry->offset]),
                                  payload.size() - cutSize));
            return {};
        }
        cut.push_back({entry->offset, entry->end()});
        cutSize += static_cast<std::size_t>(entry->size);
        from = entry->end();
    }
    if (!withLoops) {
        cut.insert(cut.end(), loops.begin(), loops.end());
        std::sort(cut.begin(), cut.end(),
                  [](const LoopEntry& one, const LoopEntry& other) { return one.offset < other.offset; });
    }
    ByteWriter rest;
    std::size_t at = 0;
    for (const LoopEntry& entry : cut) {
        if (entry.offset > at) rest.bytes(payload.subspan(at, entry.offset - at));
        at = std::max(at, entry.end);  // an entry may lie inside the one before
    }
    rest.bytes(payload.subspan(at));
    return rest.take();
}

ZALNullableString labelFromBytes(ZALDataView bytes) {
    // An entry that ends without the terminator has an empty label too.
    std::string text(bytes.begin(), bytes.empty() ? bytes.end() : bytes.end() - 1);
    if (!isValidUTF8(text)) return std::nullopt;
    return text;
}

}  // namespace zal
