#include "platform/FileReplacement.h"
#include "support/CollectionFixtures.h"
#include "support/LogCapture.h"

#include <zaltag/platform/ZALNotificationCenter.h>
#include <zaltag/rekordbox/ZALRekordboxDatabase.h>
#include <zaltag/rekordbox/ZALRekordboxQueue.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fmt/format.h>

#include <atomic>
#include <filesystem>
#include <future>
#include <thread>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr auto twoTracks = R"(<DJ_PLAYLISTS><COLLECTION>
<TRACK TrackID="7" Location="file://localhost/a.mp3" TotalTime="100">
<POSITION_MARK Name="hot" Type="0" Start="9" Num="0"/><POSITION_MARK Name="mem" Type="0" Start="8" Num="-1"/></TRACK>
<TRACK TrackID="8" Location="file://localhost/b.mp3" TotalTime="100"><TEMPO Inizio="0" Bpm="60"/></TRACK>
</COLLECTION></DJ_PLAYLISTS>)";

ZALArray<ZALTagCuePoint> cuesAt(const std::vector<double>& times) {
    std::vector<ZALTagCuePoint> cues;
    for (const double time : times) {
        cues.push_back(ZALTagCuePoint(time, "n"));
    }
    return cues;
}

using Pairs = std::vector<std::pair<std::int64_t, double>>;

class RekordboxQueue : public testing::Test, protected CollectionHost {
  protected:
    RekordboxQueue() : RekordboxQueue(twoTracks) {}
    explicit RekordboxQueue(const std::string& content) {
        ZALRekordboxDatabase::setUserRekordboxDatabaseFileURL(file("rekordbox.xml", content));
        database = ZALRekordboxDatabase::initWithRekordboxDatabaseFileAtURL(path());
        queue = ZALRekordboxQueue::queueWithDatabase(database);
        settle();  // a new queue looks whether the file changed
    }

    std::string path() const { return root() + "/rekordbox.xml"; }
    std::string importFile(int number) const {
        return root() + fmt::format("/rekordbox_zalcues_{:03}.xml", number);
    }
    // Num and start of every cue of a track.
    Pairs cues(const std::string& track) const {
        Pairs all;
        for (const auto& cue : database->trackForSongFileAtURL(track)->cues()) {
            all.emplace_back(cue.num(), cue.start());
        }
        return all;
    }
    // Writes the file as another program would, at another time than before.
    void replaceFile(const std::string& content) {
        file("rekordbox.xml", content);
        std::filesystem::last_write_time(path(),
                                         std::filesystem::last_write_time(path()) + std::chrono::hours(1));
    }
    // Waits for what the serial queue was asked for.
    void settle() {
        completed([&](ZALCompletion done) { queue->reload(std::move(done)); });
    }
    void request(const std::vector<double>& times, bool hot = true, bool memory = false) {
        queue->setCuePoints(cuesAt(times), "/a.mp3", hot, memory);
    }
    // What the track holds after a batch with such a request.
    Pairs after(const std::vector<double>& times, bool hot = true, bool memory = false) {
        request(times, hot, memory);
        EXPECT_TRUE(saved(*queue).success);
        return cues("/a.mp3");
    }

    std::shared_ptr<ZALRekordboxDatabase> database;
    std::shared_ptr<ZALRekordboxQueue> queue;
};

}  // namespace

TEST_F(RekordboxQueue, replacesHotCuesMemoryCuesOrBoth) {
    EXPECT_EQ(after({3, 1}), (Pairs{{-1, 8}, {0, 1}, {1, 3}}));
    EXPECT_EQ(after({5}, false, true), (Pairs{{-1, 5}, {0, 1}, {1, 3}}));
    EXPECT_EQ(after({2, 1}, true, true), (Pairs{{-1, 1}, {-1, 2}, {0, 1}, {1, 2}}));
    EXPECT_EQ(after({}, true, true), Pairs());
    EXPECT_EQ(countOf(contentOf(path()), "<POSITION_MARK Num=\"0\" />"), 1U);
    EXPECT_EQ(countOf(contentOf(path()), "<POSITION_MARK"), 1U);
    EXPECT_EQ(countOf(contentOf(importFile(1)), "<POSITION_MARK Num=\"0\" />"), 1U) << "placeholders too";
}

TEST_F(RekordboxQueue, anUnchangedBatchWritesImportFilesAlone) {
    after({1});
    const std::string once = contentOf(path());
    const std::string import = contentOf(importFile(1));
    clock->advance(10);
    for (const int stale : {1, 2, 100, 101})
        file(fmt::format("rekordbox_zalcues_{:03}.xml", stale), "stale");
    after({1});
    EXPECT_EQ(contentOf(path()), once);
    EXPECT_NE(contentOf(importFile(1)), import) << "its date";
    EXPECT_EQ(contentOf(importFile(1)).size(), import.size());
    EXPECT_FALSE(std::filesystem::exists(importFile(2)) || std::filesystem::exists(importFile(100)));
    EXPECT_TRUE(std::filesystem::exists(importFile(101)));
    EXPECT_EQ(queue->progress().first, 0U);
}

TEST_F(RekordboxQueue, theTimerWritesAfter180SecondsAndAnExplicitSaveLeavesItAlone) {
    request({1});
    settle();
    ZALMainQueue::shared().runPending();
    EXPECT_EQ(queue->progress().first, 1U);
    EXPECT_EQ(clock->pending(), 1U);
    clock->advance(100);
    ASSERT_TRUE(saved(*queue).success);
    EXPECT_EQ(clock->pending(), 1U);
    request({4});
    settle();
    EXPECT_EQ(clock->pending(), 1U) << "the one that runs is enough";
    clock->advance(79.9);
    settle();
    EXPECT_EQ(cues("/a.mp3"), (Pairs{{-1, 8}, {0, 1}}));
    clock->advance(0.2);
    settle();
    EXPECT_EQ(cues("/a.mp3"), (Pairs{{-1, 8}, {0, 4}}));
    EXPECT_EQ(clock->pending(), 0U);
}

TEST_F(RekordboxQueue, aFailedReloadKeepsTheRequestsAndTheNextBatchDropsThem) {
    replaceFile("<broken");
    request({1});
    const LogCapture log;
    const Completed first = saved(*queue);
    EXPECT_FALSE(first.success);
    EXPECT_EQ(first.error.value().code, ZALErrorCode::rekordboxCollectionUnreadable);
    EXPECT_THAT(log.lines(),
                ElementsAre(HasSubstr("-[ZALRekordboxQueue processQueueAndSave:] failed to reload "
                                      "the rekordbox db: ")));
    ZALMainQueue::shared().runPending();
    EXPECT_EQ(queue->progress().first, 1U);
    EXPECT_EQ(clock->pending(), 1U);
    EXPECT_TRUE(saved(*queue).success) << "nothing is loaded: requests are dropped without a word";
    replaceFile(twoTracks);
    ASSERT_TRUE(reloaded(*queue).success);
    EXPECT_TRUE(saved(*queue).success);
    EXPECT_EQ(contentOf(path()), twoTracks);
}

TEST_F(RekordboxQueue, aFailedSaveKeepsTheRequestsAndIsTriedAgain) {
    const std::string blocked = zal::FileReplacement::temporaryPath(path());
    std::filesystem::create_directory(blocked);
    const LogCapture log;
    request({1});
    settle();
    clock->advance(180);
    settle();
    EXPECT_EQ(clock->pending(), 1U) << "armed again after a failed batch";
    const Completed result = saved(*queue);
    EXPECT_FALSE(result.success);
    EXPECT_EQ(result.error.value().code, ZALErrorCode::rekordboxCollectionUnwritable);
    EXPECT_EQ(contentOf(path()), twoTracks);
    std::filesystem::remove(blocked);
    clock->advance(180);
    settle();
    EXPECT_EQ(countOf(contentOf(path()), "Start=\"1\""), 1U);
    EXPECT_EQ(clock->pending(), 0U);
}

// The last reference goes while blocks wait, and inside of a completion.
TEST_F(RekordboxQueue, livesAsLongAsItsBlocks) {
    bool isDone = false;
    queue->save([&isDone, held = queue](bool, const ZALError*) { isDone = true; });
    for (int i = 0; i < 20; ++i) {
        request({1});
    }
    queue->cancel();
    queue.reset();
    EXPECT_TRUE(ZALMainQueue::shared().runUntil([&] { return isDone; }, std::chrono::minutes(10)));
}

TEST_F(RekordboxQueue, progressGoesThroughItsStages) {
    std::vector<std::uint64_t> stages;
    const auto token = ZALNotificationCenter::shared().addObserver(
        ZALRekordboxQueueProgressChangedNotification, [&](const ZALNotification& notification) {
            EXPECT_EQ(notification.sender, queue.get());
            stages.push_back(queue->progress().first);
        });
    // A host that runs what it is handed at once sees every change.
    ZALMainQueue::shared().setExecutor([](const auto& block) { block(); });
    const auto run = [&](auto operation) {
        std::promise<void> done;
        ((*queue).*operation)([&done](bool, const ZALError*) { done.set_value(); });
        done.get_future().wait();
    };
    run(&ZALCollectionQueue::reload);
    EXPECT_TRUE(stages.empty()) << "the file did not change";
    request({1});
    run(&ZALCollectionQueue::save);
    EXPECT_THAT(stages, ElementsAre(1, 3, 4, 0));
    replaceFile(twoTracks);
    run(&ZALCollectionQueue::reload);
    EXPECT_THAT(stages, ElementsAre(1, 3, 4, 0, 2, 0));
    ZALMainQueue::shared().setExecutor({});
    ZALNotificationCenter::shared().removeObserver(token);
}

TEST_F(RekordboxQueue, completionsArriveOnceAlsoWhenNothingIsThereAndAfterShutDown) {
    std::filesystem::remove(path());
    const LogCapture log;
    EXPECT_FALSE(reloaded(*queue).success);
    queue->shutDown();
    EXPECT_FALSE(saved(*queue).success);
    EXPECT_FALSE(reloaded(*queue).success);
}
