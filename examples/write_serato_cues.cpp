// write_serato_cues FILE SECONDS NAME [SECONDS NAME]...: replaces Serato's cue points in an audio file.
#include <zaltag/zaltag.h>

#include <cstdlib>
#include <iostream>
#include <vector>

int main(int argc, char** argv) {
    if (argc < 4 || argc % 2 != 0) {
        std::cerr << "usage: write_serato_cues FILE SECONDS NAME [SECONDS NAME]...\n";
        return 2;
    }
    std::vector<ZALTagCuePoint> cuePoints;
    for (int i = 2; i < argc; i += 2) {
        cuePoints.push_back(ZALTagCuePoint(std::atof(argv[i]), argv[i + 1]));
    }

    const auto tag = ZALTag::tagAtPath(argv[1]);
    if (tag == nullptr || tag->readOnly()) {
        std::cerr << argv[1] << ": cannot be opened for writing\n";
        return 1;
    }
    tag->setSeratoCuePoints(cuePoints);
    ZALError error;
    if (!tag->save(&error)) {
        std::cerr << argv[1] << ": not saved, and as it was (error " << static_cast<int>(error.code) << ")\n";
        return 1;
    }
    // What the file holds now: on the beats of Serato's grid, and no more than eight.
    for (const ZALTagCuePoint& cue : tag->seratoCuePoints()) {
        std::cout << cue.description() << "\n";
    }
    return 0;
}
