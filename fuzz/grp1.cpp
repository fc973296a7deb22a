// The text of a GRP1 frame, when there is one, is UTF-8.

#include <zaltag/base/ZALTagDecodeGRP1FrameData.h>

#include "base/Unicode.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto text = ZALTagDecodeGRP1FrameData(data, static_cast<std::uint32_t>(size));
    if (text && !zal::isValidUTF8(*text)) std::abort();
    return 0;
}
