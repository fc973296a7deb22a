#pragma once

#if __cplusplus < 202002L
#error "ZALTag needs C++20: compile with -std=c++20"
// Nothing behind it would compile either: a header that is not there ends it here.
#define ZALTAG_THE_END <zaltag/needs/C++20>
#include ZALTAG_THE_END
#endif

/// ZALTAG_EXPORT marks what the shared library gives away; everything else stays hidden in it.
///
/// Every public name begins with ZAL, zal_ or ZALTAG. A few functions and a constant have a second name that
/// does not; a host that has such names of its own defines ZALTAG_NO_BARE_NAMES before it includes a header.
#define ZALTAG_EXPORT __attribute__((visibility("default")))

/// Members of exported classes that only the library itself can call.
#define ZALTAG_INSIDE __attribute__((visibility("hidden")))
