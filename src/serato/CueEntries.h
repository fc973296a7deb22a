#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALText.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace zal {

/// The offset of the next "CUE" entry in a payload: the first of the offsets 0 to length - 9 at which the
/// bytes are 43 55 45 00. A plain search over bytes, which can land inside another entry's body. None, with
/// one log line, for a null buffer.
std::optional<std::size_t> findNextCue(ZALDataView bytes);

/// Where a "CUE" entry lies in a payload. Its size, header included, is what the entry claims and may run
/// past the end.
struct CueEntry {
    std::size_t offset;
    std::uint64_t size;

    bool fits(ZALDataView payload) const { return size <= payload.size() - offset; }
    std::size_t end() const { return offset + static_cast<std::size_t>(size); }
};

/// Where a "LOOP" entry lies in a payload.
struct LoopEntry {
    std::size_t offset;
    std::size_t end;
};

/// The "LOOP" entries of a payload, in its order. They are found by going from entry to entry, up to the
/// first that is none: their name may stand anywhere in the labels of others.
std::vector<LoopEntry> loopEntries(ZALDataView payload);

/// The first "CUE" entry at or after an offset. What stands in the loops is passed over.
std::optional<CueEntry> nextCueEntry(ZALDataView payload, std::size_t from,
                                     const std::vector<LoopEntry>& loops);

/// The payload without its "CUE" entries, and without its loops unless they are wanted; empty, with one log
/// line, when the size of a "CUE" entry runs past the end. Each search goes on behind the entry before it: a
/// "CUE" that the cutting joins from two sides stays.
ZALData carriedEntries(ZALDataView payload, bool withLoops);

/// A label; null when the bytes are not UTF-8. Their last one is its terminator.
ZALNullableString labelFromBytes(ZALDataView bytes);

}  // namespace zal
