#pragma once

#include <zaltag/base/ZALData.h>

#include <cstddef>
#include <cstdint>
#include <optional>

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

/// The first "CUE" entry at or after an offset.
std::optional<CueEntry> nextCueEntry(ZALDataView payload, std::size_t from);

/// The payload without its "CUE" entries; empty, with one log line, when the size of one runs past the end.
/// Each search goes on behind the entry before it: a "CUE" that the cutting joins from two sides stays.
ZALData withoutCueEntries(ZALDataView payload);

}  // namespace zal
