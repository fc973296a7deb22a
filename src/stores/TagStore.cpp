#include "stores/TagStore.h"

#include "records/StoredRecord.h"

namespace zal {

void setRecord(TagStore& store, const Carrier& carrier, const ZALTagCustomProperty* record) {
    const ZALNullableData stored = storedRecord(record);
    if (stored) store.setPayload(carrier, stored->empty() ? std::nullopt : stored);
}

}  // namespace zal
