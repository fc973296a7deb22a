#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALJSONValue.h>

#include <optional>

// A record's dictionary and the bytes that every carrier stores for it: compact JSON in base64 text, which
// ends in a line feed. No state; any thread.

/// The stored bytes of a dictionary. Null, with one log line, when it is no valid JSON object: not an object,
/// or holding a number that is not finite or a text that is not UTF-8.
ZALTAG_EXPORT ZALNullableData ZALTagRecordData(const ZALJSONValue& dictionary);

/// The dictionary in stored bytes, always a JSON object. Null when they decode to nothing, and then nothing
/// is logged; null, with one log line, when they decode to something else than the JSON text of an object.
ZALTAG_EXPORT std::optional<ZALJSONValue> ZALTagRecordDictionary(ZALDataView storedBytes);

#ifndef ZALTAG_NO_BARE_NAMES
inline ZALNullableData tagData(const ZALJSONValue& dictionary) {
    return ZALTagRecordData(dictionary);
}
inline std::optional<ZALJSONValue> JSONDict(ZALDataView storedBytes) {
    return ZALTagRecordDictionary(storedBytes);
}
#endif
