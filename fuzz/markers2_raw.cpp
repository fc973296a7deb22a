#include "Markers2Checks.h"

// The input is a record, and a payload without its wrapping.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const ZALDataView data(bytes, size);
    checkMarkers2(data);
    checkMarkers2(recordOfPayload(data));
    return 0;
}
