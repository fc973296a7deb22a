#pragma once

// The version of these headers; that of the library at work is ZALHost::libraryVersion().
#define ZALTAG_VERSION_MAJOR 1
#define ZALTAG_VERSION_MINOR 0
#define ZALTAG_VERSION_PATCH 0
#define ZALTAG_VERSION "1.0.0"

/// Whether the headers are of a version or a newer one, for the preprocessor.
#define ZALTAG_VERSION_AT_LEAST(major, minor, patch) \
    (ZALTAG_VERSION_MAJOR > (major) ||               \
     (ZALTAG_VERSION_MAJOR == (major) &&             \
      (ZALTAG_VERSION_MINOR > (minor) ||             \
       (ZALTAG_VERSION_MINOR == (minor) && ZALTAG_VERSION_PATCH >= (patch)))))
