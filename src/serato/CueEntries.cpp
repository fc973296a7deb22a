#include "serato/CueEntries.h"

#include "base/Endian.h"
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

std::optional<CueEntry> nextCueEntry(ZALDataView payload, std::size_t from) {
    if (from >= payload.size()) return std::nullopt;
    const auto hit = findNextCue(payload.subspan(from));
    if (!hit) return std::nullopt;
    const std::size_t offset = from + *hit;
    return CueEntry{offset, std::uint64_t{ByteReader(payload.subspan(offset + 4)).u32be()} + 8};
}

ZALData withoutCueEntries(ZALDataView payload) {
    ByteWriter rest;
    std::size_t at = 0;
    while (const auto entry = nextCueEntry(payload, at)) {
        if (!entry->fits(payload)) {
            logDamage(fmt::format("invalid cue point size: {} at offset {} (length: {})", entry->size,
                                  static_cast<const void*>(&payload[entry->offset]),
                                  rest.size() + payload.size() - at));
            return {};
        }
        rest.bytes(payload.subspan(at, entry->offset - at));
        at = entry->end();
    }
    rest.bytes(payload.subspan(at));
    return rest.take();
}

}  // namespace zal
