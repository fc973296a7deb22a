#pragma once

namespace zal {

/// Ends the process over a broken assertion, in release builds too, after one line on standard error.
[[noreturn]] void assertionFailed(const char* expression, const char* function, const char* source, int line);

}  // namespace zal
