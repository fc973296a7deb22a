#pragma once

#include <zaltag/base/ZALData.h>

#include <string_view>

namespace zal {

/// The raw record inside its encoded form: base64 of a 42-byte header, which is not compared, and the record.
/// Null, with one log line that names the kind of data, when there is no whole header.
ZALNullableData recordFromEncodedForm(ZALDataView encoded, std::string_view kind);

/// The encoded form of a raw marker record of either kind. Null, with one log line, when the memory cannot be
/// had.
ZALNullableData encodedFormOfMarkers(ZALDataView record);

}  // namespace zal
