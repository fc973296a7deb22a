// start: what a program costs that links the library and asks it for its version.

#include <zaltag/platform/ZALHost.h>

int main() {
    return ZALHost::libraryVersion().empty();
}
