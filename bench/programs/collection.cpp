// collection load|changedTracks|everyTrackWithCues|all rekordbox|traktor FILE: what the library needs to load
// a collection and look every track up; or to load it, set the cues of every hundredth track and save it in
// that mode; or of every track, in the mode changedTracks. FILE.paths lists the tracks.

#include "Measure.h"

#include <zaltag/zaltag.h>

#include <cstdlib>
#include <functional>

namespace {

std::vector<ZALTagCuePoint> newCues() {
    std::vector<ZALTagCuePoint> cues;
    for (int i = 0; i < 8; ++i) {
        cues.push_back(ZALTagCuePoint(10.0 + 15.0 * i, "Bench"));
    }
    return cues;
}

void finish(bool done) {
    if (!done) std::abort();
}

void wait(const std::function<void(ZALCompletion)>& operation) {
    bool isDone = false;
    operation([&isDone](bool success, const ZALError*) {
        finish(success);
        isDone = true;
    });
    finish(ZALMainQueue::shared().runUntil([&isDone] { return isDone; }, std::chrono::minutes(10)));
}

template <typename Database, typename Queue, typename SetCues>
void run(const std::string& mode, const std::string& file, const SetCues& setCues) {
    Measure measure;
    measure.start();
    const std::shared_ptr<Database> database = Database::sharedDatabase();
    const std::size_t step = mode == "all" ? 1 : 100;
    ZALHost::shared().setCollectionSaveMode(mode == "everyTrackWithCues"
                                                ? ZALCollectionSaveMode::everyTrackWithCues
                                                : ZALCollectionSaveMode::changedTracks);
    if (mode != "load") {
        const std::shared_ptr<Queue> queue = Queue::sharedQueue();
        std::size_t number = 0;
        forEachLine(file + ".paths", [&](const std::string& path) {
            if (number++ % step == 0) setCues(*queue, path, newCues());
        });
        wait([&queue](ZALCompletion completion) { queue->save(std::move(completion)); });
    }
    measure.stop();
    std::uint64_t held = 0;
    forEachLine(file + ".paths",
                [&](const std::string& path) { held += database->hasTrackForSongFileAtURL(path); });
    measure.found("tracks", database->trackCount());
    measure.found("found by path", held);
    measure.print();
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 4) return 2;
    const std::string mode = arguments[1];
    const std::string program = arguments[2];
    const std::string file = arguments[3];
    const auto settings = ZALUserDefaults::inMemory();
    ZALHost::shared().setUserDefaults(settings);
    ZALHost::shared().setLogSink([](const std::string&) {});
    ZALHost::shared().setRunningPrograms([] { return std::vector<std::string>(); });
    if (program == "rekordbox") {
        settings->setString(ZALRekordboxDatabaseFileUserSetLocationURL, file);
        run<ZALRekordboxDatabase, ZALRekordboxQueue>(mode, file,
                                                     [](auto& queue, const auto& path, const auto& cues) {
                                                         queue.setCuePoints(cues, path, true, false);
                                                     });
    } else {
        settings->setString(ZALTraktorDatabaseFileUserSetLocationURL, file);
        run<ZALTraktorDatabase, ZALTraktorQueue>(
            mode, file,
            [](auto& queue, const auto& path, const auto& cues) { queue.setCuePoints(cues, path); });
    }
    std::fflush(stdout);
    std::quick_exit(0);
}
