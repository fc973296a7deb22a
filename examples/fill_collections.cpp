// fill_collections REKORDBOX.XML COLLECTION.NML FILE...: Serato's cue points of the files into both
// collections.
#include <zaltag/zaltag.h>

#include <filesystem>
#include <iostream>

namespace {

bool isSaved(ZALCollectionQueue& queue, const char* name) {
    ZALError error;
    const bool isDone = queue.saveAndWait(&error);
    if (!isDone) std::cerr << name << ": " << error.localizedDescription << "\n";
    return isDone;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4) {
        std::cerr << "usage: fill_collections REKORDBOX.XML COLLECTION.NML FILE...\n";
        return 2;
    }
    // For this run. Without this line the two files are remembered: a program asks its user once.
    ZALHost::shared().setUserDefaults(ZALUserDefaults::inMemory());
    ZALRekordboxDatabase::setUserRekordboxDatabaseFileURL(argv[1]);
    ZALTraktorDatabase::setUserTraktorDatabaseFileURL(argv[2]);
    if (!ZALTag::isRekordboxDBAvailable() || !ZALTag::isTraktorDBAvailable()) return 1;

    std::vector<std::string> paths;  // collections know absolute ones
    for (int i = 3; i < argc; ++i) {
        paths.push_back(std::filesystem::absolute(argv[i]).lexically_normal().string());
        const auto tag = ZALTag::tagAtPath(paths.back(), true);
        if (tag == nullptr) {
            std::cerr << argv[i] << ": cannot be opened\n";
            return 1;
        }
        const auto cuePoints = tag->seratoCuePoints();
        if (tag->isInRekordboxDB()) tag->setRekordboxHotAndMemoryCuePoints(cuePoints);
        if (tag->isInTraktorDB()) tag->setTraktorCuePoints(cuePoints);
    }
    const bool both = isSaved(*ZALRekordboxQueue::sharedQueue(), "Rekordbox") &&
                      isSaved(*ZALTraktorQueue::sharedQueue(), "Traktor");

    // A queue leaves out what a collection has newer without failing: look the tracks up.
    for (const std::string& path : paths) {
        const auto track = ZALRekordboxDatabase::sharedDatabase()->trackForSongFileAtURL(path);
        const auto entry = ZALTraktorDatabase::sharedDatabase()->trackForSongFileAtURL(path);
        std::cout << path << ": " << (track ? track->cueCount() : 0) << " marks in Rekordbox, "
                  << (entry ? entry->cueCount() : 0) << " cues in Traktor\n";
    }
    return both ? 0 : 1;
}
