#include "support/CollectionFixtures.h"
#include "support/LogCapture.h"

#include <zaltag/traktor/ZALTraktorDatabase.h>
#include <zaltag/traktor/ZALTraktorQueue.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fmt/format.h>

namespace {

using testing::ElementsAre;

// The host's clock says 2023/11/14, second 80000.
const std::string entry = R"(<NML><COLLECTION><ENTRY MODIFIED_DATE="{}" MODIFIED_TIME="{}">
<LOCATION DIR="/:" FILE="a.mp3"/><INFO PLAYTIME="9"/><TEMPO BPM="60"/>
<CUE_V2 NAME="grid" TYPE="4" START="0" LEN="0" HOTCUE="-1"/><CUE_V2 NAME="loop" TYPE="5" START="5" LEN="1"
HOTCUE="0"/></ENTRY></COLLECTION></NML>)";

class TraktorQueue : public testing::Test, protected CollectionHost {
  protected:
    void open(const char* date, int time) {
        const std::string content = fmt::format(fmt::runtime(entry), date, time);
        database = ZALTraktorDatabase::databaseOfFileAtURL(file("collection.nml", content));
        queue = ZALTraktorQueue::queueWithDatabase(database);
    }
    // Name, type, index and start of every cue.
    std::vector<std::string> cues() const {
        std::vector<std::string> all;
        for (const auto& cue : database->trackForSongFileAtURL("/a.mp3")->cues()) {
            all.push_back(fmt::format("{} {} {} {}", cue.name(), cue.type(), cue.index(), cue.startTime()));
        }
        return all;
    }

    const ZALArray<ZALTagCuePoint> request{ZALTagCuePoint(2.6, "late"), ZALTagCuePoint(1.4, std::nullopt)};
    std::shared_ptr<ZALTraktorDatabase> database;
    std::shared_ptr<ZALTraktorQueue> queue;
};

}  // namespace

TEST_F(TraktorQueue, skipsAnEntryThatChangedLaterOrHasNoDate) {
    for (const auto& [date, time] : {std::pair("2023/11/14", 80001), {"2023/11/15", 0}, {"2023/13/45", 0}}) {
        open(date, time);
        const LogCapture log;
        queue->setCuePoints(request, "/a.mp3");
        EXPECT_TRUE(saved(*queue).success);
        EXPECT_THAT(log.lines(), testing::Contains("Skipping track 'a.mp3' (modified)"));
        EXPECT_THAT(cues(), ElementsAre("grid 4 -1 0", "loop 5 0 0.005")) << date;
        EXPECT_EQ(queue->progress().first, 0U) << "the request is gone";
    }
}

TEST_F(TraktorQueue, keepsItsRequestsWhileTraktorRuns) {
    open("2023/11/14", 0);
    host->setRunningPrograms([] { return std::vector<std::string>{"traktor.exe"}; });
    queue->setCuePoints(request, "/a.mp3");
    const Completed refused = saved(*queue);
    EXPECT_FALSE(refused.success);
    ASSERT_TRUE(refused.error);
    EXPECT_EQ(refused.error->code, ZALErrorCode::traktorRunning);
    EXPECT_FALSE(refused.error->localizedRecoverySuggestion.empty());
    EXPECT_EQ(queue->progress().first, 1U) << "it waits";
    host->setRunningPrograms([] { return std::vector<std::string>{}; });
    EXPECT_TRUE(saved(*queue).success);
    EXPECT_EQ(cues().size(), 3U);
    EXPECT_EQ(queue->progress().first, 0U);
}
