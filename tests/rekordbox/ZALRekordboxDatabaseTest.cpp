#include "collection/XML.h"
#include "support/CollectionFixtures.h"
#include "support/LogCapture.h"

#include <zaltag/platform/ZALFolderBookmarks.h>
#include <zaltag/rekordbox/ZALRekordboxDatabase.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace {

using testing::ElementsAre;

class Rekordbox : public testing::Test, protected CollectionHost {
  protected:
    std::shared_ptr<ZALRekordboxDatabase> opened(const std::string& content) {
        ZALRekordboxDatabase::setUserRekordboxDatabaseFileURL(file("rekordbox.xml", content));
        return ZALRekordboxDatabase::initWithRekordboxDatabaseFileAtURL(
            ZALRekordboxDatabase::rekordboxDatabaseFileURL());
    }
    std::shared_ptr<const ZALRekordboxTrack> trackOf(const std::string& content) {
        const auto all =
            opened("<DJ_PLAYLISTS><COLLECTION>" + content + "</COLLECTION></DJ_PLAYLISTS>")->tracks();
        return all.empty() ? nullptr : all[0];
    }
};

std::vector<double> beats(const ZALRekordboxTrack& track) {
    const auto times = track.beatTimes();
    return times ? times->elements() : std::vector<double>{-1};
}

}  // namespace

TEST_F(Rekordbox, findsTracksByPathInAnyNormalizationAndTheLastOfSeveral) {
    const auto database = opened(
        "<DJ_PLAYLISTS><COLLECTION><TRACK TrackID='1' Location='file://localhost/e%CC%81.mp3'/>"
        "<TRACK TrackID='2' Location='file://localhost/same.mp3'/><TRACK TrackID='9' Location=''/>"
        "<TRACK TrackID='3' Location='file:///same.mp3'/></COLLECTION></DJ_PLAYLISTS>");
    EXPECT_EQ(database->trackForSongFileAtURL("/e\xCC\x81.mp3")->filename(), "e\xCC\x81.mp3");
    EXPECT_EQ(database->trackForSongFileAtURL("/same.mp3")->trackId(), 3);
    EXPECT_EQ(database->trackForSongFileAtURL(std::nullopt), nullptr);
    EXPECT_EQ(database->playlist(), nullptr);
}

TEST_F(Rekordbox, tracksOfPlaylistsByIdAndByLocation) {
    const auto database = opened(
        "<DJ_PLAYLISTS><COLLECTION><TRACK TrackID='1' Location='file://localhost/e%CC%81.mp3'/>"
        "<TRACK TrackID='2'/><TRACK TrackID='3' Location='file:///b.mp3'/></COLLECTION><PLAYLISTS>"
        "<NODE Type='0' Name='R'><NODE Type='1' Name='ids' KeyType='0'><TRACK Key='3'/><TRACK Key='9'/>"
        "<TRACK Key='2'/></NODE><NODE Type='1' Name='places' KeyType='1'><TRACK Key='soundcloud:1'/>"
        "<TRACK Key='file://localhost/e%cc%81.mp3'/></NODE></NODE></PLAYLISTS></DJ_PLAYLISTS>");
    std::vector<std::vector<std::int32_t>> found;
    const auto root = database->playlist();
    for (const auto& playlist : root->playlists()) {
        found.emplace_back();
        for (const auto& track : database->tracksOfPlaylist(*playlist)) {
            found.back().push_back(track->trackId());
        }
    }
    EXPECT_THAT(found, ElementsAre(ElementsAre(2, 3), ElementsAre(1)));
}

TEST_F(Rekordbox, beatsStartAnewWithEveryTempo) {
    const auto beatsOf = [this](const std::string& tempos, const char* total = "31") {
        return beats(*trackOf("<TRACK Location='file:///a' TotalTime='" + std::string(total) + "'>" + tempos +
                              "</TRACK>"));
    };
    const auto changing = beatsOf("<TEMPO Inizio='0.0' Bpm='120'/><TEMPO Inizio='30.0' Bpm='60'/>");
    ASSERT_EQ(changing.size(), 61U);
    EXPECT_TRUE(changing[59] == 29.5 && changing[60] == 30.0);
    // Beats in the last tenth of a second before a new tempo are left to it.
    const auto close = beatsOf("<TEMPO Inizio='29.45' Bpm='120'/><TEMPO Inizio='30' Bpm='60'/>");
    EXPECT_THAT(close, ElementsAre(29.45, 30.0));
    const auto distant = beatsOf("<TEMPO Inizio='29.375' Bpm='120'/><TEMPO Inizio='30' Bpm='60'/>");
    EXPECT_THAT(distant, ElementsAre(29.375, 29.875, 30.0));
    const std::vector<double> none{-1};
    EXPECT_EQ(beatsOf(""), none);
    EXPECT_EQ(beatsOf("<TEMPO Inizio='0'/>"), none);
    EXPECT_EQ(beatsOf("<TEMPO Inizio='0' Bpm='120'/><TEMPO Inizio='9' Bpm='0'/>"), none);
    EXPECT_EQ(beatsOf("<TEMPO Inizio='1e300' Bpm='120'/>", "1e301"), none) << "steps that do not advance";
    EXPECT_EQ(beatsOf("<TEMPO Inizio='0' Bpm='1e9'/>", "1e9"), none) << "too many";
    EXPECT_EQ(beats(*trackOf("<TRACK><TEMPO Inizio='0' Bpm='120'/></TRACK>")), none) << "no duration";
}

TEST_F(Rekordbox, cuesOfATrackChangeAsAList) {
    const auto track = trackOf(
        "<TRACK><POSITION_MARK Start='1' Num='0'/><POSITION_MARK Start='2' Num='1'/>"
        "<POSITION_MARK Start='3' Num='-1'/></TRACK>");
    auto& changed = const_cast<ZALRekordboxTrack&>(*track);
    changed.removeAllCues(true, false);
    ASSERT_EQ(changed.cues().size(), 1U);
    EXPECT_EQ(changed.cues()[0].num(), -1);
    EXPECT_TRUE(changed.forceDummyCuePoint());
    changed.insertObject(ZALRekordboxCuePoint(ZALTagCuePoint(1, "bad\x01\xFF"), 0), 0);
    EXPECT_EQ(changed.cues()[0].name(), "bad\xEF\xBF\xBD\xEF\xBF\xBD") << "what XML cannot hold";
    changed.removeCuesObject(changed.cues()[0]);
    EXPECT_EQ(changed.cueCount(), 1U);
    EXPECT_THROW(changed.removeObjectFromCuesAtIndex(1), std::logic_error);
}

TEST_F(Rekordbox, foldersAreWrittenAnewOnlyWhenTheyChanged) {
    const std::string tree =
        R"(<NODE Type="0" Name="R" Odd="1"><NODE Type="0" Name="f"/>)"
        R"(<NODE Type="1" Name="p" KeyType="2"><TRACK Key="x"/></NODE><NODE Name="none"/>)"
        R"(<NODE Type="0" Name="g"/></NODE>)";
    zal::XMLDocument document;
    const auto node = document.load(tree);
    const auto root = ZALRekordboxPlaylistFolder::initWithXMLElement(node);
    ASSERT_TRUE(root);
    const auto names = [&] {
        std::string all;
        for (auto child = node.firstChild(); child; child = child.next())
            all += child.attributeText("Name") + " ";
        return all;
    };
    root->updateXMLElement();
    EXPECT_EQ(names(), "f p none g ");
    EXPECT_FALSE(root->playlists()[0]->addTrackAsId(1)) << "keyed by location";
    root->setName("S");
    root->updateXMLElement();
    EXPECT_EQ(names(), "p f g ");
    EXPECT_EQ(node.attributes(), (std::vector<std::pair<std::string, std::string>>{
                                     {"Type", "0"}, {"Name", "S"}, {"Count", "3"}}));
}

TEST_F(Rekordbox, locatesTheFileByChoiceThenInDocumentsAndInASandboxByBookmark) {
    EXPECT_EQ(ZALRekordboxDatabase::rekordboxDatabaseFileURL(), std::nullopt);
    EXPECT_FALSE(
        ZALRekordboxDatabase::initWithRekordboxDatabaseFileAtURL(std::nullopt)->isRekordboxDBLoaded());
    const std::string standard = file("rekordbox.xml", "<DJ_PLAYLISTS/>");
    EXPECT_EQ(ZALRekordboxDatabase::rekordboxDatabaseFileURL(), standard);
    ZALRekordboxDatabase::setUserRekordboxDatabaseFileURL("/elsewhere/mine.xml");
    EXPECT_EQ(ZALRekordboxDatabase::rekordboxDatabaseFileURL(), "/elsewhere/mine.xml");

    host->setEnvironment([](const std::string& name) {
        return name == "APP_SANDBOX_CONTAINER_ID" ? ZALNullableString("x") : std::nullopt;
    });
    EXPECT_EQ(ZALRekordboxDatabase::rekordboxDatabaseFileURL(), std::nullopt);
    ZALRekordboxDatabase::setRekordboxDatabasePermissionsFolder(root());
    EXPECT_TRUE(ZALRekordboxDatabase::hasPermissionForRekordboxFolder());
    EXPECT_FALSE(ZALRekordboxDatabase::rekordboxDatabaseFileExists());
    const auto bookmarks = ZALHost::shared().folderBookmarks();
    EXPECT_EQ(ZALRekordboxDatabase::rekordboxDatabaseFileURL(), std::nullopt);
    EXPECT_EQ(bookmarks->accessCount(root()), 0U) << "stopped when no file is there";
    const std::string mine = file("mine.xml", "<DJ_PLAYLISTS/>");
    EXPECT_EQ(ZALRekordboxDatabase::rekordboxDatabaseFileURL(), mine) << "by the name of the user's file";
    EXPECT_EQ(bookmarks->accessCount(root()), 1U) << "left open for the reading";
    const auto database = ZALRekordboxDatabase::initWithRekordboxDatabaseFileAtURL(mine);
    const std::size_t opened = bookmarks->accessCount(root());
    EXPECT_TRUE(database->fileModificationDate());
    EXPECT_EQ(bookmarks->accessCount(root()), opened + 1)
        << "by finding the file; the look at it was stopped";
    ZALRekordboxDatabase::setRekordboxDatabasePermissionsFolder(std::nullopt);
    EXPECT_FALSE(ZALRekordboxDatabase::hasPermissionForRekordboxFolder());
}
