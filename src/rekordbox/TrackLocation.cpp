#include "rekordbox/TrackLocation.h"

#include "base/Unicode.h"

namespace zal {

namespace {

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

bool removePrefix(std::string_view& text, std::string_view lowercasePrefix) {
    if (asciiLowercase(text.substr(0, lowercasePrefix.size())) != lowercasePrefix) return false;
    text.remove_prefix(lowercasePrefix.size());
    return true;
}

}  // namespace

ZALNullableString pathOfLocation(std::string_view location) {
    if (!removePrefix(location, "file://")) return std::nullopt;
    removePrefix(location, "localhost");
    if (!location.starts_with('/')) return std::nullopt;
    std::string path;
    path.reserve(location.size());
    for (std::size_t i = 0; i < location.size(); ++i) {
        const bool isEscape = location[i] == '%' && i + 2 < location.size() &&
                              hexDigit(location[i + 1]) >= 0 && hexDigit(location[i + 2]) >= 0;
        if (isEscape) {
            path += static_cast<char>(hexDigit(location[i + 1]) * 16 + hexDigit(location[i + 2]));
            i += 2;
        } else {
            path += location[i];
        }
    }
    const bool isPath = isValidUTF8(path) && path.find('\0') == std::string::npos;
    return isPath ? ZALNullableString(std::move(path)) : std::nullopt;
}

}  // namespace zal
