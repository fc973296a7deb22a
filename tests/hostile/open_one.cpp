// Opens one audio file, reads everything, sets some fields and saves. Prints what became of it, "null",
// "refused" or "saved", and the number of allocations; ends with 0 when what it printed is so.

#include "support/ReadEverything.h"

#include <zaltag/platform/ZALHost.h>

#include <cstdio>
#include <cstdlib>
#include <new>

namespace {

long allocations = 0;

int said(const char* word, bool isRight = true) {
    std::printf("%s %ld\n", word, allocations);
    return isRight ? 0 : 3;
}

int tryLibrary(const std::string& path) {
    int lines = 0;
    ZALHost::shared().setLogSink([&lines](const std::string&) { ++lines; });
    const auto tag = ZALTag::tagAtPath(path);
    if (tag == nullptr) return said("null");
    readEverything(*tag);
    tag->allImages();
    tag->setTitle("another");
    tag->setZalKey(ZALTagKey("8A", 1));
    tag->setSeratoCuePoints({ZALTagCuePoint(1.5, "cue")});
    lines = 0;
    ZALError error;
    if (!tag->save(&error)) return said("refused", lines == 1 && error.code == ZALErrorCode::saveFailed);
    const auto again = ZALTag::tagAtPath(path);
    return said("saved",
                again != nullptr && again->title() == "another" && !again->seratoCuePoints().empty());
}

}  // namespace

// Those of the libraries are counted, too.
void* operator new(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    ++allocations;
    return std::malloc(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

int main(int argc, char** argv) {
    return argc == 2 ? tryLibrary(argv[1]) : 2;
}
