#include "support/CollectionFixtures.h"

#include <zaltag/id3/ZALTagID3.h>
#include <zaltag/rekordbox/ZALRekordboxDatabase.h>
#include <zaltag/rekordbox/ZALRekordboxQueue.h>
#include <zaltag/tag/ZALTag.h>
#include <zaltag/traktor/ZALTraktorDatabase.h>
#include <zaltag/traktor/ZALTraktorQueue.h>

#include <gtest/gtest.h>

namespace {

using CuePoints = ZALArray<ZALTagCuePoint>;

CuePoints cue(double time) {
    return CuePoints({ZALTagCuePoint(time, "n")});
}

// The shared databases and queues, over files of this test.
class Links : public testing::Test, protected CollectionHost {
  protected:
    Links() {
        song = folder.write("song.mp3", mpegFrames());
        ZALRekordboxDatabase::setUserRekordboxDatabaseFileURL(
            file("rb.xml", "<DJ_PLAYLISTS><COLLECTION><TRACK TrackID='1' Location='file://localhost" + song +
                               "'><POSITION_MARK Start='1' Num='0'/><POSITION_MARK Start='2' Num='-1'/>"
                               "</TRACK></COLLECTION></DJ_PLAYLISTS>"));
        ZALTraktorDatabase::setUserTraktorDatabaseFileURL(file(
            "c.nml", "<NML><COLLECTION><ENTRY MODIFIED_DATE='2020/1/1' MODIFIED_TIME='0'><LOCATION DIR='" +
                         traktorFolder(folder.path()) +
                         "' FILE='song.mp3'/><CUE_V2 TYPE='4' START='9000' HOTCUE='-1'/>"
                         "<CUE_V2 TYPE='5' START='3000' HOTCUE='2'/></ENTRY></COLLECTION></NML>"));
        EXPECT_TRUE(completed(ZALTag::reloadRekordboxDBWithCompletionBlock).success);
        EXPECT_TRUE(completed(ZALTag::reloadTraktorDBWithCompletionBlock).success);
        tag = ZALTag::tagAtPath(song, true);
    }
    ~Links() override {
        ZALTag::cancelSaveRekordboxDB();
        ZALTag::cancelSaveTraktorDB();
        completed(ZALTag::saveRekordboxDBWithCompletionBlock);
        completed(ZALTag::saveTraktorDBWithCompletionBlock);
    }

    // A queue with a waiting request shows stage 1.
    static bool isWaiting(ZALCollectionQueue& queue) {
        reloaded(queue);
        return queue.progress().first == 1;
    }

    std::string song;
    std::shared_ptr<ZALTag> tag;
};

}  // namespace

TEST_F(Links, theCollectionsAreSeenThroughTheTag) {
    EXPECT_TRUE(ZALTag::isRekordboxDBAvailable() && ZALTag::isTraktorDBAvailable());
    ASSERT_TRUE(tag);
    EXPECT_TRUE(tag->isInRekordboxDB() && tag->isInTraktorDB());
    EXPECT_EQ(tag->rekordboxHotCuePoints(), CuePoints({ZALTagCuePoint(1, "")}));
    EXPECT_EQ(tag->rekordboxMemoryCuePoints(), CuePoints({ZALTagCuePoint(2, "")}));
    EXPECT_EQ(tag->traktorCuePoints(), CuePoints({ZALTagCuePoint(3, "")})) << "no grid marker";
    const auto elsewhere = ZALTag::tagAtPath(folder.write("other.mp3", mpegFrames()), true);
    EXPECT_FALSE(elsewhere->isInRekordboxDB());
    EXPECT_TRUE(elsewhere->traktorCuePoints().empty() && ZALTag::canExportToRekordbox());
    host->setRunningPrograms([] { return std::vector<std::string>{"Traktor"}; });
    EXPECT_FALSE(ZALTag::canExportToTraktor());
}

TEST_F(Links, theVeryArrayThatIsHeldQueuesNothing) {
    auto& rekordbox = *ZALRekordboxQueue::sharedQueue();
    auto& traktor = *ZALTraktorQueue::sharedQueue();
    tag->setRekordboxHotCuePoints(tag->rekordboxHotCuePoints());
    tag->setRekordboxMemoryCuePoints(tag->rekordboxMemoryCuePoints());
    tag->setTraktorCuePoints(tag->traktorCuePoints());
    EXPECT_FALSE(isWaiting(rekordbox) || isWaiting(traktor));
    const CuePoints both = cue(5);
    tag->setRekordboxHotAndMemoryCuePoints(both);
    tag->setTraktorCuePoints(both);
    EXPECT_TRUE(isWaiting(rekordbox) && isWaiting(traktor));
    ZALTag::cancelSaveRekordboxDB();
    ZALTag::cancelSaveTraktorDB();
    EXPECT_FALSE(isWaiting(rekordbox));
    tag->setRekordboxHotAndMemoryCuePoints(both);
    tag->setTraktorCuePoints(both);
    EXPECT_FALSE(isWaiting(rekordbox)) << "it is what both hold";
    EXPECT_FALSE(isWaiting(traktor));
    tag->setRekordboxHotCuePoints(cue(5));
    EXPECT_TRUE(isWaiting(rekordbox)) << "equal is not the same";
    ZALTag::cancelSaveRekordboxDB();
    tag->setRekordboxHotAndMemoryCuePoints(both);
    EXPECT_TRUE(isWaiting(rekordbox)) << "one of the two is another one";
}

TEST_F(Links, eachSetterReplacesItsOwnCuesInTheCollectionsAlone) {
    const std::string before = contentOf(song);
    tag->setRekordboxHotCuePoints(cue(5));
    EXPECT_TRUE(completed(ZALTag::saveRekordboxDBWithCompletionBlock).success);
    EXPECT_EQ(tag->rekordboxHotCuePoints(), cue(5));
    EXPECT_EQ(tag->rekordboxMemoryCuePoints()[0].time(), 2);
    tag->setRekordboxMemoryCuePoints(cue(7));
    tag->setTraktorCuePoints(cue(6));
    EXPECT_TRUE(completed(ZALTag::saveRekordboxDBWithCompletionBlock).success);
    EXPECT_TRUE(completed(ZALTag::saveTraktorDBWithCompletionBlock).success);
    EXPECT_EQ(tag->rekordboxMemoryCuePoints(), cue(7));
    EXPECT_EQ(countOf(contentOf(root() + "/rb.xml"), "Start=\"5\""), 1U);
    EXPECT_EQ(countOf(contentOf(root() + "/c.nml"), "START=\"6000.000000\""), 1U);
    EXPECT_EQ(contentOf(song), before);
}
