#include "BeatgridChecks.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const ZALDataView data(bytes, size);
    if (const auto grid = ZALTagSeratoGrid::gridWithData(data)) checkGrid(*grid, data);
    return 0;
}
