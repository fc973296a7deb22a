#pragma once

#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALText.h>

#include <cstdint>

/// The text of an ID3 GRP1 (grouping) frame from its payload: an encoding byte, then the text. Encoding 0 is
/// Latin-1; every other value is UTF-16, with a byte-order mark or else big-endian. No terminator is
/// stripped. Null for a null pointer, fewer than two bytes, an odd number of UTF-16 bytes or a lone
/// surrogate. Nothing is logged; any thread.
ZALTAG_EXPORT ZALNullableString ZALTagDecodeGRP1FrameData(const void* bytes, std::uint32_t length);
