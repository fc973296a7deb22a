// Opens one audio file, reads everything, sets a field and saves. Prints what became of it: "null", "refused"
// or "saved"; ends with 0 when that is as it must be.

#include "support/ReadEverything.h"

#include <zaltag/platform/ZALHost.h>

#include <cstdio>

namespace {

int said(const char* word, bool isRight = true) {
    std::puts(word);
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
    tag->setZalKey(ZALTagKey::keyWithKey("8A", 1));
    tag->setSeratoCuePoints({ZALTagCuePoint::cuePointWithTime(1.5, "cue")});
    lines = 0;
    ZALError error;
    if (!tag->save(&error)) return said("refused", lines == 1 && error.code == ZALErrorCode::saveFailed);
    const auto again = ZALTag::tagAtPath(path);
    return said("saved",
                again != nullptr && again->title() == "another" && !again->seratoCuePoints().empty());
}

}  // namespace

int main(int argc, char** argv) {
    return argc == 2 ? tryLibrary(argv[1]) : 2;
}
