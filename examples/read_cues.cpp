// read_cues FILE...: prints the cue points that Serato and this library keep in audio files.
#include <zaltag/zaltag.h>

#include <iostream>

namespace {

void print(const char* place, const ZALArray<ZALTagCuePoint>& cuePoints) {
    for (const ZALTagCuePoint& cue : cuePoints) {
        std::cout << place << "\t" << cue.time() << " s\t" << cue.name().value_or("(no name)") << "\n";
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::cerr << "usage: read_cues FILE...\n";
        return 2;
    }
    int failed = 0;
    for (int i = 1; i < argc; ++i) {
        const auto tag = ZALTag::tagAtPath(argv[i], true);  // read-only
        if (tag == nullptr) {
            std::cerr << argv[i] << ": cannot be opened\n";
            ++failed;
            continue;
        }
        print("serato", tag->seratoCuePoints());
        if (const auto record = tag->zalCuePoints()) print("zal", record->cuePoints());
    }
    return failed == 0 ? 0 : 1;
}
