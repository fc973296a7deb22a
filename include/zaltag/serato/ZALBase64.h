#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALExport.h>

#include <cstdint>

/// The length of a full line of base64 text, without its line feed: 72.
inline constexpr std::int32_t ZALBase64LineLength = 72;

/// The bytes as base64 text: a line feed after every ZALBase64LineLength characters and one at the end, so
/// that a full last line ends in two. Null, with one log line, when the memory cannot be had. Any thread.
ZALTAG_EXPORT ZALNullableData ZALDataByEncodingBase64(ZALDataView data);

/// The bytes of base64 text. Bytes outside the alphabet and "=" are skipped wherever they stand; a group cut
/// short at the end gives its whole bytes. Null, with one log line, when the memory cannot be had. Any
/// thread.
ZALTAG_EXPORT ZALNullableData ZALDataByDecodingBase64(ZALDataView data);

#ifndef ZALTAG_NO_BARE_NAMES
static constexpr std::int32_t CHARS_PER_LINE = ZALBase64LineLength;  // static: libb64 can have one, too
inline ZALNullableData dataByEncodingBase64(ZALDataView data) {
    return ZALDataByEncodingBase64(data);
}
inline ZALNullableData dataByDecodingBase64(ZALDataView data) {
    return ZALDataByDecodingBase64(data);
}
#endif
