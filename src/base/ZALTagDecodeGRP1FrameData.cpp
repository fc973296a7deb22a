#include <zaltag/base/ZALTagDecodeGRP1FrameData.h>

#include "base/Unicode.h"

ZALNullableString ZALTagDecodeGRP1FrameData(const void* bytes, std::uint32_t length) {
    if (bytes == nullptr || length < 2) return std::nullopt;
    const ZALDataView payload(static_cast<const std::uint8_t*>(bytes), length);
    const ZALDataView text = payload.subspan(1);
    if (payload.front() != 0) return zal::utf8FromUTF16Bytes(text);
    return zal::utf8FromLatin1({reinterpret_cast<const char*>(text.data()), text.size()});
}
