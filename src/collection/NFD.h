#pragma once

#include <string>
#include <string_view>

namespace zal {

/// The path in Unicode canonical decomposition. What is not UTF-8, or longer than a path, stays as it is.
std::string canonicalDecomposition(std::string_view text);

/// A text in canonical decomposition and in one letter case, by Unicode's case folding.
std::string inOneCase(std::string_view text);

}  // namespace zal
