#include "records/StoredRecord.h"

#include <zaltag/records/ZALTagRecordData.h>

namespace zal {

ZALNullableData storedRecord(const ZALTagCustomProperty* record) {
    const auto dictionary = record != nullptr ? record->JSONDict() : std::nullopt;
    return dictionary ? ZALTagRecordData(*dictionary) : ZALData();
}

}  // namespace zal
