#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALExport.h>

#include <cstdint>

/// The length of a full line of base64 text, without its line feed: 72.
ZALTAG_EXPORT extern const std::int32_t CHARS_PER_LINE;

/// The bytes as base64 text: a line feed after every CHARS_PER_LINE characters and one at the end, so that a
/// full last line ends in two. Null, with one log line, when the memory cannot be had. Any thread.
ZALTAG_EXPORT ZALNullableData dataByEncodingBase64(ZALDataView data);

/// The bytes of base64 text. Bytes outside the alphabet and "=" are skipped wherever they stand; a group cut
/// short at the end gives its whole bytes. Null, with one log line, when the memory cannot be had. Any
/// thread.
ZALTAG_EXPORT ZALNullableData dataByDecodingBase64(ZALDataView data);
