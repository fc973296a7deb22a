#pragma once

/// ZALTAG_EXPORT marks what the shared library gives away; everything else stays hidden in it.
#define ZALTAG_EXPORT __attribute__((visibility("default")))
