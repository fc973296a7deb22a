// What the databases and queues of both programs do alike.

#include "platform/FileReplacement.h"
#include "support/CollectionPrograms.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <thread>

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class Shared : public testing::TestWithParam<CollectionKind>, protected CollectionHost {
  protected:
    Shared() {
        kind.choose(path());
        write({"/1.mp3", "/2.mp3"});
        database = kind.chosen(path());
        queue = kind.queue(database);
    }

    std::string path() const { return root() + "/collection.xml"; }
    static std::string content(std::size_t tracks) {
        std::string text = GetParam().head;
        for (std::size_t number = 1; number <= tracks; ++number) {
            text += GetParam().track(static_cast<int>(number), "", "");
        }
        return text + GetParam().tail;
    }
    // Another file takes the name, as the programs themselves save.
    void replace(const std::string& text, const std::string& target = "collection.xml") const {
        std::filesystem::rename(file("new", text), root() + "/" + target);
    }
    void write(const std::vector<std::string>& tracks) const { replace(content(tracks.size())); }
    void request(double time, const std::string& track = "/1.mp3") {
        queue->setCuePoints({ZALTagCuePoint(time, ZALNullableString("n"))}, track, ZALCueKind::hot);
    }
    std::vector<double> times(const std::string& track = "/1.mp3") const {
        std::vector<double> all;
        const auto found = database->track(track);
        if (!found) return {-1};
        for (const ZALTagCuePoint& cue : found->cuePoints(ZALCueKind::hot)) {
            all.push_back(cue.time());
        }
        return all;
    }

    const CollectionKind& kind = GetParam();
    std::shared_ptr<ZALCollectionDatabase> database;
    std::shared_ptr<ZALCollectionQueue> queue;
};

INSTANTIATE_TEST_SUITE_P(Programs, Shared, testing::ValuesIn(collectionKinds()),
                         [](const auto& one) { return std::string(one.param.name); });

}  // namespace

TEST_P(Shared, whatIsNoXMLOrWouldNotSurviveIsRefused) {
    std::string nested;
    for (int i = 0; i < 4000; ++i) {
        nested += i < 2000 ? "<a>" : "</a>";
    }
    for (const std::string& refused :
         {std::string("<DJ_PLAYLISTS>"), std::string(), std::string("<a b='1' b='2'/>"),
          std::string("<a>&x;</a>"), std::string("<!DOCTYPE a [<!ENTITY x 'y'>]><a/>"),
          std::string("<a/>\n<b/>"), std::string("<!DOCTYPE a [<!ATTLIST a b NMTOKEN #IMPLIED>]><a/>"),
          std::string("<!DOCTYPE a [<!ATTLIST a b CDATA 'x'>]><a/>"),
          std::string("<!DOCTYPE a SYSTEM 'x'><a b='&x;'/>"), std::string("<!DOCTYPE a [ %x; ]><a b='&y;'/>"),
          std::string("\xEF\xBB\xBF<?xml version='1.0' encoding='ISO-8859-1'?><a b='\xC3\xA9'/>"),
          std::string("<?xml version='1.0' encoding='x-other'?><a/>"), std::string("<a>\xFF</a>"),
          std::string("<a/>"), nested}) {
        replace(refused);
        const LogCapture log;
        const auto opened = kind.chosen(path());
        EXPECT_FALSE(opened->isLoaded()) << refused.substr(0, 80);
        EXPECT_THAT(log.lines(), ElementsAre(StartsWith(kind.openFailure + path() + ": ")));
        ZALError error;
        EXPECT_FALSE(opened->reload(&error));
        EXPECT_TRUE(error.code == kind.unreadable && error.domain == ZALTagErrorDomain);
        const std::string& reason = error.underlyingError->localizedDescription;
        EXPECT_FALSE(reason.empty());
        EXPECT_EQ(reason.starts_with("its root is <a>, not <"), refused == "<a/>") << reason;
        EXPECT_FALSE(opened->save(&error));
        EXPECT_EQ(contentOf(path()), refused);
    }
}

TEST_P(Shared, theFileIsLoadedWhenItChangedOrIsBackAndAFailureLeavesOrUnloads) {
    EXPECT_FALSE(database->needsReloading());
    write({"/1.mp3", "/2.mp3", "/3.mp3"});
    std::filesystem::last_write_time(path(), std::chrono::file_clock::now() + std::chrono::hours(1));
    EXPECT_TRUE(database->needsReloading());
    EXPECT_EQ(database->trackCount(), 2U);
    EXPECT_EQ(times("/2.mp3").size(), 2U) << "the file that was read stays readable";
    const std::string other = file("other.xml", "<broken");
    EXPECT_FALSE(kind.load(*database, other));
    EXPECT_TRUE(database->isLoaded()) << "another file than the one to be used";
    replace("<broken");
    EXPECT_FALSE(database->reload());
    EXPECT_FALSE(database->isLoaded());
    EXPECT_EQ(times("/2.mp3").size(), 2U);
    std::filesystem::remove(path());
    EXPECT_FALSE(database->reload());
    request(3);
    EXPECT_TRUE(saved(*queue).success) << "no file: requests are dropped without a word";
    write({"/1.mp3"});
    EXPECT_TRUE(database->needsReloading()) << "it is back";
    request(4);
    EXPECT_TRUE(saved(*queue).success);
    EXPECT_THAT(times(), ElementsAre(4));
}

TEST_P(Shared, noOtherCollectionIsOverwritten) {
    host->setLocalizer([](const std::string& text) { return "de: " + text; });
    const auto refused = [&](const std::string& target) {
        const LogCapture log;
        const std::string before = contentOf(target);
        ZALError error;
        EXPECT_FALSE(database->save(&error));
        EXPECT_EQ(error.code, kind.unwritable);
        EXPECT_THAT(error.localizedDescription, AllOf(StartsWith("de: Error saving "), HasSubstr(kind.name)));
        EXPECT_EQ(contentOf(target), before);
        EXPECT_THAT(log.lines(), ElementsAre(StartsWith(kind.writeFailure + target + "): ")));
        return error.underlyingError->localizedDescription;
    };
    const std::string other = file("other.xml", content(1));
    kind.choose(other);
    EXPECT_EQ(refused(other), "it is another collection than the one that was read");
    kind.choose(root() + "/no/folder.xml");
    EXPECT_FALSE(refused(root() + "/no/folder.xml").empty());
    kind.choose(path());
    write({"/1.mp3"});
    EXPECT_EQ(refused(path()), "another program has changed it since it was read");
    ASSERT_TRUE(database->reload());
    std::filesystem::last_write_time(path(), std::chrono::file_clock::now() + std::chrono::hours(1));
    EXPECT_EQ(refused(path()), "another program has changed it since it was read") << "by its date";
    request(4);
    EXPECT_TRUE(saved(*queue).success) << "a batch reads it first";
    EXPECT_EQ(database->trackCount(), 1U);
    const std::string nowhere = root() + "/nowhere.xml";
    kind.choose(nowhere);
    EXPECT_TRUE(database->save()) << "no file is there";
    EXPECT_TRUE(database->openedURL() == nowhere && !database->needsReloading());
    EXPECT_EQ(kind.open(nowhere)->trackCount(), 1U);
    const auto own = kind.open(path());
    EXPECT_TRUE(own->save() && own->fileURL() == path()) << "by its path, whatever the user chose";
}

TEST_P(Shared, aFileThatChangesUnderTheIndexIsNeverGuessed) {
    for (const auto mode :
         {ZALCollectionSaveMode::everyTrackWithCues, ZALCollectionSaveMode::changedTracks}) {
        host->setCollectionSaveMode(mode);
        write({"/1.mp3", "/2.mp3"});
        ASSERT_TRUE(database->reload());
        const auto date = std::filesystem::last_write_time(path());
        std::string text = contentOf(path());
        text.replace(text.find("kept"), 4, "Kept");
        file("collection.xml", text);  // in place, and nobody notices by the date
        std::filesystem::last_write_time(path(), date);
        const LogCapture log;
        EXPECT_FALSE(database->needsReloading());
        EXPECT_EQ(database->track("/1.mp3"), nullptr);
        EXPECT_TRUE(database->track("/2.mp3"));
        EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("it has to be loaded anew")));
        EXPECT_TRUE(database->needsReloading());
        ASSERT_TRUE(database->reload());
        text.replace(text.find("Kept"), 4, "kept");
        file("collection.xml", text);
        std::filesystem::last_write_time(path(), date);
        request(4);
        EXPECT_FALSE(saved(*queue).success);
        EXPECT_EQ(contentOf(path()), text);
        EXPECT_TRUE(saved(*queue).success) << "loaded anew";
        EXPECT_THAT(times(), ElementsAre(4));
    }
}

TEST_P(Shared, aPathIsOneInEveryNormalizationAndTheNewestRequestWins) {
    std::string text = content(1);
    for (auto at = text.find("1.mp3"); at != text.npos; at = text.find("1.mp3", at + 9)) {
        text.replace(at, 5, "e\xCC\x81.mp3");
    }
    replace(text);
    ASSERT_TRUE(database->reload());
    request(3, "/\xC3\xA9.mp3");
    request(4, "/e\xCC\x81.mp3");
    request(5, "/\xC3\xA9.mp3");
    EXPECT_TRUE(saved(*queue).success);
    EXPECT_THAT(times("/\xC3\xA9.mp3"), ElementsAre(5));
    EXPECT_THAT(times("/E\xCC\x81.mp3"), ElementsAre(-1)) << "case counts";
    EXPECT_EQ(database->pathsLike({"/\xC3\x89.MP3"})[0].size(), 1U) << "but not there";
}

TEST_P(Shared, audioFilesThatAreAwayAreOneLine) {
    for (const auto mode :
         {ZALCollectionSaveMode::everyTrackWithCues, ZALCollectionSaveMode::changedTracks}) {
        host->setCollectionSaveMode(mode);
        const LogCapture log;
        request(8), request(9, "/2.mp3");
        EXPECT_TRUE(saved(*queue).success);
        const bool isTraktor = kind.name == std::string("Traktor");
        const auto line = AllOf(HasSubstr("/1.mp3"), HasSubstr(": 2)"));
        EXPECT_THAT(log.lines(), testing::Conditional(isTraktor, ElementsAre(line), testing::IsEmpty()));
        write({"/1.mp3", "/2.mp3"});
    }
}

TEST_P(Shared, aCancelledRequestIsNotWrittenAfterAFailedSave) {
    for (const auto mode :
         {ZALCollectionSaveMode::everyTrackWithCues, ZALCollectionSaveMode::changedTracks}) {
        host->setCollectionSaveMode(mode);
        const std::string blocked = zal::FileReplacement::temporaryPath(path());
        std::filesystem::create_directory(blocked);
        const LogCapture log;
        request(8);
        EXPECT_FALSE(saved(*queue).success);
        EXPECT_NE(times(), std::vector<double>{8});
        std::filesystem::remove(blocked);
        queue->cancel();
        EXPECT_TRUE(queue->saveAndWait() && clock->pending() == 0) << "nothing is left to do";
        request(9, "/2.mp3");
        EXPECT_TRUE(saved(*queue).success);
        EXPECT_NE(times(), std::vector<double>{8});
        EXPECT_THAT(times("/2.mp3"), ElementsAre(9));
        write({"/1.mp3", "/2.mp3"});
    }
}

TEST_P(Shared, aTrackTellsWhetherARequestWouldChangeIt) {
    const auto cues = [](std::initializer_list<double> times) {
        std::vector<ZALTagCuePoint> all;
        for (const double time : times) {
            all.push_back(ZALTagCuePoint(time, ZALNullableString(time == 1 ? "kept" : "gone")));
        }
        return ZALArray<ZALTagCuePoint>(all);
    };
    const auto track = database->track("/1.mp3");
    const bool isRekordbox = kind.name == std::string("Rekordbox");
    // Traktor's second cue is a loop on no pad, and no request asks for such a one.
    EXPECT_EQ(track->hasCuePoints(cues({5, 1}), ZALCueKind::hot), isRekordbox);
    EXPECT_FALSE(track->hasCuePoints(cues({1}), ZALCueKind::hot));
    EXPECT_FALSE(track->hasCuePoints(cues({5, 1}), ZALCueKind::all));
    EXPECT_TRUE(track->hasCuePoints(cues({}), ZALCueKind::none));
    EXPECT_EQ(track->cuePoints(ZALCueKind::hot), isRekordbox ? cues({1, 5}) : cues({5, 1}));
    EXPECT_EQ(track->cuePoints(ZALCueKind::memory).size(), isRekordbox ? 1U : 2U);
    request(1);
    EXPECT_TRUE(saved(*queue).success);
    EXPECT_TRUE(database->track("/1.mp3")->hasCuePoints({ZALTagCuePoint(1.0000004, ZALNullableString("n"))},
                                                        ZALCueKind::hot));
}

// Requests, batches, reloads, lookups and listings from many threads; worth most under the thread sanitizer.
TEST_P(Shared, servesManyThreadsAtOnce) {
    std::atomic<int> asked = 0, arrived = 0;
    std::atomic<bool> stop = false;
    const LogCapture log;
    const auto count = [&](bool, const ZALError*) { ++arrived; };
    const auto look = [&](auto function) {
        return std::thread([&, function] {
            while (!stop)
                function();
        });
    };
    std::thread looking[] = {
        look([&] { times(), database->needsReloading(), database->track("/1.mp3")->beatTimes(); }),
        look([&] { database->forEachTrack([&](const auto& track) { database->track(track->path()); }); }),
    };
    std::vector<std::thread> senders;
    for (int t = 0; t < 4; ++t) {
        senders.emplace_back([&, t] {
            for (int i = 0; i < 300; ++i) {
                request(i % 7, t % 2 == 0 ? "/1.mp3" : "/2.mp3");
                if (i % 50 == 0) ++asked, queue->save(count);
                if (i % 70 == 0) ++asked, queue->reload(count);
                if (i % 170 == 0) queue->cancel();
                host->setCollectionSaveMode(i % 3 == 0 ? ZALCollectionSaveMode::changedTracks
                                                       : ZALCollectionSaveMode::everyTrackWithCues);
            }
        });
    }
    for (std::thread& sender : senders)
        sender.join();
    request(6), request(6, "/2.mp3");
    ++asked, queue->save(count);
    EXPECT_TRUE(ZALMainQueue::shared().runUntil([&] { return arrived == asked; }, std::chrono::minutes(10)));
    stop = true;
    for (std::thread& thread : looking)
        thread.join();
    EXPECT_TRUE(reloaded(*queue).success) << "the file is whole";
    EXPECT_THAT(times(), ElementsAre(6));
    EXPECT_THAT(times("/2.mp3"), ElementsAre(6));
}
