#include "Markers2Checks.h"

// The input is an encoded record, a raw one and a payload without any wrapping.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const ZALDataView data(bytes, size);
    checkEncodedMarkers2(data);
    checkEncodedMarkers2(encodedForm(data));
    checkEncodedMarkers2(encodedForm(recordOfPayload(data)));
    return 0;
}
