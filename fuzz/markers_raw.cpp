#include "MarkersChecks.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    for (const char* fileType : {"mp3", "m4a"}) {
        if (const auto marker = ZALTagSeratoMarkerOld::initWithData({bytes, size}, fileType)) {
            checkWriting(*marker);
        }
    }
    return 0;
}
