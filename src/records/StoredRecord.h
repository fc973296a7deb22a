#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/records/ZALTagCustomProperty.h>

namespace zal {

/// The bytes that every carrier stores for a record; empty for null and for a record that has nothing to
/// store. Null, with a log line, for one that could not be read again: then the one in the file stays.
ZALNullableData storedRecord(const ZALTagCustomProperty* record);

}  // namespace zal
