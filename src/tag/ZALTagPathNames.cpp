#include <zaltag/tag/ZALTagPathNames.h>

#include "base/Paths.h"
#include "base/Unicode.h"

#include <string_view>

namespace {

constexpr std::string_view separator = " - ";

}  // namespace

std::string ZALTagArtistFromPath(const std::string& path) {
    const std::string_view name = zal::baseName(path);
    const std::size_t at = name.find(separator);
    return at == std::string_view::npos ? std::string()
                                        : std::string(zal::trimmedOfBlanks(name.substr(0, at)));
}

std::string ZALTagNameFromPath(const std::string& path) {
    const std::string_view name = zal::baseName(path);
    const std::size_t at = name.find(separator);
    const std::size_t start = at == std::string_view::npos ? 0 : at + separator.size();
    return std::string(zal::trimmedOfBlanks(name.substr(start)));
}
