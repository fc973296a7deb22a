#pragma once

#include <zaltag/base/ZALExport.h>

#include <cstdint>

// Sync-safe integers: unsigned numbers of which every byte carries seven bits, so that no byte has its top
// bit set. All are big-endian. The functions keep no state and can be called from any thread; pointers must
// not be null.

/// The largest value that ZALTagSyncSafe4 accepts.
inline constexpr std::uint32_t ZALTagSyncSafe4ValueMax = 0x0FFFFFFF;

/// Packs `value` into four bytes at `out` and returns `out`. A value above ZALTagSyncSafe4ValueMax is a
/// programming error and aborts the process, in release builds too.
ZALTAG_EXPORT std::uint8_t* ZALTagSyncSafe4(std::uint32_t value, std::uint8_t* out);

/// The value of four bytes. A byte with its top bit set, which a well-formed field never has, spreads its
/// sign over all higher bits of the result: 00 00 00 80 is 0xFFFFFF80.
ZALTAG_EXPORT std::uint32_t ZALTagUnSyncSafe4(const std::uint8_t* in);

/// Packs any 32-bit value into five bytes at `out` and returns `out`. With the top bit of the value set, the
/// first byte is filled with the sign (0x78 to 0x7F).
ZALTAG_EXPORT std::uint8_t* ZALTagSyncSafe5(std::uint32_t value, std::uint8_t* out);

/// The value of five bytes, the inverse of ZALTagSyncSafe5 for every value. The first byte is taken unsigned;
/// the others spread their sign as in ZALTagUnSyncSafe4.
ZALTAG_EXPORT std::uint32_t ZALTagUnSyncSafe5(const std::uint8_t* in);
