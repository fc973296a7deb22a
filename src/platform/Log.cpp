#include "platform/Log.h"

#include <zaltag/platform/ZALHost.h>

#include <fmt/format.h>

#include <iterator>

namespace zal {

void log(const std::string& line) {
    ZALHost::shared().log(line);
}

std::string describe(ZALDataView bytes) {
    constexpr std::size_t group = 4;
    std::string out = "<";
    for (; bytes.size() > group; bytes = bytes.subspan(group)) {
        fmt::format_to(std::back_inserter(out), "{:02x} ", fmt::join(bytes.first(group), ""));
    }
    return fmt::format("{}{:02x}>", out, fmt::join(bytes, ""));
}

std::string describe(const ZALNullableString& text) {
    return text.value_or("(null)");
}

}  // namespace zal
