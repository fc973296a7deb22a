#include "platform/Log.h"

#include <zaltag/platform/ZALHost.h>

namespace zal {

void log(const std::string& line) {
    ZALHost::shared().log(line);
}

std::string describe(ZALDataView bytes) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string out = "<";
    out.reserve(2 + bytes.size() * 2 + bytes.size() / 4);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i > 0 && i % 4 == 0) out += ' ';
        out += digits[bytes[i] >> 4];
        out += digits[bytes[i] & 0x0F];
    }
    return out + ">";
}

std::string describe(const ZALNullableString& text) {
    return text.value_or("(null)");
}

}  // namespace zal
