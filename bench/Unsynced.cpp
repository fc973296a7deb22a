// Linked into programs whose row leaves the syncs out on both sides: stands before the C library's fsync(),
// for the library under test, too.

extern "C" __attribute__((visibility("default"))) int fsync(int file);

extern "C" int fsync(int) {
    return 0;
}
