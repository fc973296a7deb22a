#include "collection/NFD.h"

#include "base/Limits.h"
#include "base/Unicode.h"

#include <utf8proc.h>

#include <algorithm>
#include <cstdlib>

namespace zal {

std::string canonicalDecomposition(std::string_view text) {
    // ASCII is decomposed already, and most paths are ASCII.
    if (isASCII(text) || text.size() > limits::path) return std::string(text);
    utf8proc_uint8_t* decomposed = nullptr;
    const utf8proc_ssize_t length = utf8proc_map(
        reinterpret_cast<const utf8proc_uint8_t*>(text.data()), static_cast<utf8proc_ssize_t>(text.size()),
        &decomposed, static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_DECOMPOSE));
    if (length < 0) return std::string(text);
    std::string result(reinterpret_cast<const char*>(decomposed), static_cast<std::size_t>(length));
    std::free(decomposed);  // the library hands over what malloc gave
    return result;
}

}  // namespace zal
