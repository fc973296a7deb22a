// fill_collections REKORDBOX.XML COLLECTION.NML FILE...: Serato's cue points of the files into both
// collections. The paths are absolute.
#include <zaltag/zaltag.h>

#include <chrono>
#include <iostream>

namespace {

// Saves a collection and waits for it.
bool isSaved(void (*save)(ZALCompletion), const char* name) {
    bool isDone = false;
    bool isWritten = false;
    save([&](bool success, const ZALError* error) {
        isDone = true;
        isWritten = success && error == nullptr;
        if (error != nullptr) std::cerr << name << ": " << error->localizedDescription << "\n";
    });
    return ZALMainQueue::shared().runUntil([&] { return isDone; }, std::chrono::minutes(1)) && isWritten;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4) return 2;
    // Stored in the user's settings; a program asks its user once.
    ZALRekordboxDatabase::setUserRekordboxDatabaseFileURL(argv[1]);
    ZALTraktorDatabase::setUserTraktorDatabaseFileURL(argv[2]);
    if (!ZALTag::isRekordboxDBAvailable() || !ZALTag::isTraktorDBAvailable()) return 1;

    for (int i = 3; i < argc; ++i) {
        const auto tag = ZALTag::tagAtPath(argv[i], true);
        if (tag == nullptr) continue;
        const auto cuePoints = tag->seratoCuePoints();
        if (tag->isInRekordboxDB()) tag->setRekordboxHotAndMemoryCuePoints(cuePoints);
        if (tag->isInTraktorDB()) tag->setTraktorCuePoints(cuePoints);
    }
    const bool both = isSaved(&ZALTag::saveRekordboxDBWithCompletionBlock, "Rekordbox") &&
                      isSaved(&ZALTag::saveTraktorDBWithCompletionBlock, "Traktor");

    // A queue leaves out what a collection has newer without failing: look the tracks up.
    for (int i = 3; i < argc; ++i) {
        const auto track = ZALRekordboxDatabase::sharedDatabase()->trackForSongFileAtURL(argv[i]);
        const auto entry = ZALTraktorDatabase::sharedDatabase()->trackForSongFileAtURL(argv[i]);
        std::cout << argv[i] << ": " << (track ? track->cueCount() : 0) << " marks in Rekordbox, "
                  << (entry ? entry->cueCount() : 0) << " cues in Traktor\n";
    }
    return both ? 0 : 1;
}
