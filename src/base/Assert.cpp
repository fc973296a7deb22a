#include "base/Assert.h"

#include <cstdio>
#include <cstdlib>

namespace zal {

void assertionFailed(const char* expression, const char* function, const char* source, int line) {
    std::fprintf(stderr, "Assertion failed: (%s), function %s, file %s, line %d.\n", expression, function,
                 source, line);
    std::abort();
}

}  // namespace zal
