#pragma once

#include <fmt/format.h>

#include <cstddef>
#include <functional>
#include <string>
#include <utility>

namespace zal {

/// The hash of a formatted text; every value's hash is made this way.
template <typename... Arguments>
std::size_t formattedHash(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    return std::hash<std::string>{}(fmt::format(format, std::forward<Arguments>(arguments)...));
}

}  // namespace zal
