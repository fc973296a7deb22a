#include "collection/NFD.h"

#include "base/Limits.h"
#include "base/Unicode.h"

#include <utf8proc.h>

#include <cstdlib>

namespace zal {

namespace {

std::string mapped(std::string_view text, int options) {
    utf8proc_uint8_t* result = nullptr;
    const utf8proc_ssize_t length = utf8proc_map(
        reinterpret_cast<const utf8proc_uint8_t*>(text.data()), static_cast<utf8proc_ssize_t>(text.size()),
        &result, static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_DECOMPOSE | options));
    if (length < 0) return std::string(text);
    std::string copy(reinterpret_cast<const char*>(result), static_cast<std::size_t>(length));
    std::free(result);  // the library hands over what malloc gave
    return copy;
}

}  // namespace

std::string canonicalDecomposition(std::string_view text) {
    // ASCII is decomposed already, and most paths are ASCII.
    if (isASCII(text) || text.size() > limits::path) return std::string(text);
    return mapped(text, 0);
}

std::string inOneCase(std::string_view text) {
    if (isASCII(text) || text.size() > limits::path) return asciiLowercase(text);
    return mapped(text, UTF8PROC_CASEFOLD);
}

}  // namespace zal
