#pragma once

#include <string>
#include <string_view>

namespace zal {

/// The text in Unicode canonical decomposition. Text that is not UTF-8 stays as it is.
std::string canonicalDecomposition(std::string_view text);

}  // namespace zal
