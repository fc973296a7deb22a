#include "MarkersChecks.h"

// The input is an encoded record and a raw one.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const ZALDataView data(bytes, size);
    for (const ZALData& encoded : {joined("", data), encodedForm(data)}) {
        if (const auto marker = ZALTagSeratoMarkerOld::markerWithEncodedData(encoded)) checkWriting(*marker);
    }
    return 0;
}
