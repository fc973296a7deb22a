#include "BeatgridChecks.h"

// The input is an encoded record and a raw one.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const ZALDataView data(bytes, size);
    for (const ZALData& encoded : {joined("", data), encodedForm(data)}) {
        const auto grid = ZALTagSeratoGrid::gridWithEncodedData(encoded);
        const ZALData decoded = dataByDecodingBase64(encoded).value();
        if (grid) checkGrid(*grid, ZALDataView(decoded).subspan(42));
    }
    return 0;
}
