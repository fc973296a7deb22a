#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/records/ZALTagCustomProperty.h>

namespace zal {

/// The bytes that every carrier stores for a record; null for null and for a record that has nothing to
/// store.
ZALNullableData storedRecord(const ZALTagCustomProperty* record);

}  // namespace zal
