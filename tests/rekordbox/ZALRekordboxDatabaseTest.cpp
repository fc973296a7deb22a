#include "platform/XML.h"
#include "support/CollectionFixtures.h"
#include "support/LogCapture.h"

#include <zaltag/platform/ZALFolderBookmarks.h>
#include <zaltag/rekordbox/ZALRekordboxDatabase.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class Rekordbox : public testing::Test, protected CollectionHost {
  protected:
    std::shared_ptr<ZALRekordboxDatabase> opened(const std::string& content) {
        ZALRekordboxDatabase::setUserRekordboxDatabaseFileURL(file("rekordbox.xml", content));
        return ZALRekordboxDatabase::initWithRekordboxDatabaseFileAtURL(
            ZALRekordboxDatabase::rekordboxDatabaseFileURL());
    }
    std::string path() const { return root() + "/rekordbox.xml"; }
    std::string savedFrom(const std::string& content) {
        EXPECT_TRUE(opened(content)->save());
        return contentOf(path());
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

const std::string mixed = R"(<?xml version="1.0" encoding="utf-8"?>
<!-- kept -->
<DJ_PLAYLISTS ModificationDate="old" Version="1.0.0">
  <PRODUCT Name="rekordbox"/>
  <COLLECTION Entries="7">
    <TRACK TrackID="1" Location="file://localhost/a.mp3" DateModified="old" Odd="&#10;&lt;&#x1F3B5;">
      <POSITION_MARK Name="hot" Type="4" Start="2.50" End="3" Num="1" Red="1"/>
      <POSITION_MARK Type="0" Start="1" Num="0"/>
      <POSITION_MARK Name="same" Type="0" Start="0" Num="0"/>
      <TEMPO Inizio="0" Bpm="120"/>
      <POSITION_MARK Name="gone" Num="5"/>
      <POSITION_MARK Name="m" Type="0" Start="1e2" End="4" Num="-1"/>
    </TRACK>
    <TRACK TrackID="2" Location="file://localhost/b.mp3"><POSITION_MARK Num="0"/></TRACK>
  </COLLECTION>
  <OTHER><![CDATA[x]]> y&#13;</OTHER>
</DJ_PLAYLISTS>
)";

}  // namespace

TEST_F(Rekordbox, saveRewritesMarksAndStampsAndNothingElse) {
    setenv("TZ", "CET-1", 1);
    tzset();
    clock->advance(1);  // the date's text is kept for a second, in the zone of another test
    EXPECT_EQ(savedFrom(mixed), R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>
<!-- kept -->
<DJ_PLAYLISTS ModificationDate="2023-11-14 23:13:21+0100" Version="1.0.0" CreatedByApp="Host" CreatedByVersion="1.2" CreationPlatform="Mac">
  <PRODUCT Name="rekordbox" />
  <COLLECTION Entries="7">
    <TRACK TrackID="1" Location="file://localhost/a.mp3" DateModified="2023-11-14 23:13:21+0100" Odd="&#10;&lt;)"
                                "\xF0\x9F\x8E\xB5"
                                R"(">
      <TEMPO Inizio="0" Bpm="120" />
      <POSITION_MARK Name="m" Start="100" Type="0" Num="-1" />
      <POSITION_MARK Start="1" Type="0" Num="0" />
      <POSITION_MARK Name="same" Start="0" Type="0" Num="0" />
      <POSITION_MARK Name="hot" End="3" Start="2.5" Type="4" Num="1" />
    </TRACK>
    <TRACK TrackID="2" Location="file://localhost/b.mp3">
      <POSITION_MARK Num="0" />
    </TRACK>
  </COLLECTION>
  <OTHER><![CDATA[x]]> y&#13;</OTHER>
</DJ_PLAYLISTS>
)");
    const std::string once = contentOf(path());
    EXPECT_EQ(savedFrom(once), once);
    unsetenv("TZ");
    tzset();
}

TEST_F(Rekordbox, findsTracksByPathInAnyNormalizationAndTheLastOfSeveral) {
    const auto database = opened(
        "<DJ_PLAYLISTS><COLLECTION><TRACK TrackID='1' Location='file://localhost/e%CC%81.mp3'/>"
        "<TRACK TrackID='2' Location='file://localhost/same.mp3'/><TRACK TrackID='9' Location=''/>"
        "<TRACK TrackID='3' Location='file:///same.mp3'/></COLLECTION></DJ_PLAYLISTS>");
    EXPECT_EQ(database->tracks().size(), 4U);
    EXPECT_EQ(database->trackForSongFileAtURL("/\xC3\xA9.mp3")->trackId(), 1);
    EXPECT_EQ(database->trackForSongFileAtURL("/e\xCC\x81.mp3")->filename(), "e\xCC\x81.mp3");
    EXPECT_EQ(database->trackForSongFileAtURL("/same.mp3")->trackId(), 3);
    EXPECT_EQ(database->trackForSongFileAtURL("/Same.mp3"), nullptr);
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

TEST_F(Rekordbox, aLookedUpTrackOutlivesAReload) {
    const auto database = opened(mixed);
    const auto track = database->trackForSongFileAtURL("/a.mp3");
    file("rekordbox.xml", "<DJ_PLAYLISTS/>");
    ASSERT_TRUE(database->reload());
    EXPECT_EQ(database->trackForSongFileAtURL("/a.mp3"), nullptr);
    ASSERT_EQ(track->cues().size(), 4U);
    EXPECT_EQ(track->cues()[0].start(), 100);
    EXPECT_EQ(track->cues()[3].name(), "hot");
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
    const auto database = opened(mixed);
    const auto track = database->tracks()[0]->copy();
    auto& changed = const_cast<ZALRekordboxTrack&>(*track);
    changed.removeAllCues(true, false);
    ASSERT_EQ(changed.cues().size(), 1U);
    EXPECT_EQ(changed.cues()[0].num(), -1);
    EXPECT_TRUE(changed.forceDummyCuePoint());
    changed.insertObject(
        ZALRekordboxCuePoint::rekordboxCueWithCuePoint(ZALTagCuePoint::cuePointWithTime(1, "bad\x01\xFF"), 0),
        0);
    EXPECT_EQ(changed.cues()[0].name(), "bad\xEF\xBF\xBD\xEF\xBF\xBD") << "what XML cannot hold";
    changed.removeCuesObject(changed.cues()[0]);
    EXPECT_EQ(changed.cueCount(), 1U);
    EXPECT_THROW(changed.removeObjectFromCuesAtIndex(1), std::logic_error);
}

TEST_F(Rekordbox, needsReloadingWhenTheFileChangedOrIsAnother) {
    const auto database = opened("<DJ_PLAYLISTS/>");
    EXPECT_FALSE(database->needsReloading());
    std::filesystem::last_write_time(path(),
                                     std::filesystem::file_time_type::clock::now() + std::chrono::hours(1));
    EXPECT_TRUE(database->needsReloading());
    EXPECT_TRUE(database->reload());
    EXPECT_FALSE(database->needsReloading());
    ZALRekordboxDatabase::setUserRekordboxDatabaseFileURL(file("other.xml", "<DJ_PLAYLISTS/>"));
    EXPECT_TRUE(database->needsReloading());
    const LogCapture log;
    std::filesystem::remove(root() + "/other.xml");
    EXPECT_EQ(database->fileModificationDate(), std::nullopt);
    EXPECT_THAT(log.lines(), ElementsAre("-[ZALRekordboxDatabase fileModificationDate] failed to get file "
                                         "attributes for '" +
                                         root() + "/other.xml'"));
}

TEST_F(Rekordbox, refusesWhatIsNoXMLOrWouldNotSurvive) {
    std::string nested;
    for (int i = 0; i < 4000; ++i) {
        nested += i < 2000 ? "<a>" : "</a>";
    }
    for (const std::string& content :
         {std::string("<DJ_PLAYLISTS>"), std::string(), std::string("<a b='1' b='2'/>"),
          std::string("<a>&x;</a>"), std::string("<!DOCTYPE a [<!ENTITY x 'y'>]><a/>"),
          std::string("<a/>\n<b/>"), std::string("<!DOCTYPE a SYSTEM 'x'><a b='&x;'/>"),
          std::string("<!DOCTYPE a [ %x; ]><a b='&y;'/>"),
          std::string("\xEF\xBB\xBF<?xml version='1.0' encoding='ISO-8859-1'?><a b='\xC3\xA9'/>"),
          std::string("<a>\xFF</a>"), nested}) {
        const LogCapture log;
        const auto database = opened(content);
        EXPECT_FALSE(database->isRekordboxDBLoaded()) << content.substr(0, 80);
        EXPECT_THAT(log.lines(),
                    ElementsAre(HasSubstr("Unable to open Rekordbox database at " + path() + ": ")));
        ZALError error;
        EXPECT_FALSE(database->reload(&error));
        EXPECT_TRUE(error.code == ZALErrorCode::rekordboxCollectionUnreadable &&
                    error.domain == ZALTagErrorDomain);
        EXPECT_TRUE(error.underlyingError && !error.underlyingError->localizedDescription.empty());
        EXPECT_FALSE(database->save(&error));
        EXPECT_EQ(contentOf(path()), content);
    }
}

TEST_F(Rekordbox, foldersAreWrittenAnewOnlyWhenTheyChanged) {
    const std::string tree =
        R"(<DJ_PLAYLISTS><PLAYLISTS><NODE Type="0" Name="R" Odd="1"><NODE Type="0" Name="f"/>)"
        R"(<NODE Type="1" Name="p" KeyType="2"><TRACK Key="x"/></NODE><NODE Name="none"/>)"
        R"(<NODE Type="0" Name="g"/></NODE></PLAYLISTS></DJ_PLAYLISTS>)";
    zal::XMLReadError error;
    const auto read = zal::XMLDocument::read(file("tree.xml", tree), error);
    const auto node = read->root("DJ_PLAYLISTS").firstChild().firstChild();
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

TEST_F(Rekordbox, aFailedLoadKeepsWhatWasHeld) {
    const auto database = opened(mixed);
    file("rekordbox.xml", "<broken");
    EXPECT_FALSE(database->reload());
    EXPECT_FALSE(database->isRekordboxDBLoaded());
    EXPECT_TRUE(database->hasTrackForSongFileAtURL("/a.mp3"));
    file("rekordbox.xml", mixed);
    ASSERT_TRUE(database->reload());
    ZALHost::shared().setUserDefaults(ZALUserDefaults::inMemory());
    std::filesystem::remove(path());
    EXPECT_FALSE(database->reload()) << "there is no file";
    EXPECT_TRUE(database->isRekordboxDBLoaded());
}

TEST_F(Rekordbox, aSavedFileIsTheOpenedOne) {
    const auto database = opened(mixed);
    const std::string other = root() + "/other.xml";
    ZALRekordboxDatabase::setUserRekordboxDatabaseFileURL(other);
    ASSERT_TRUE(database->save());
    EXPECT_EQ(database->openedURL(), other);
    EXPECT_FALSE(database->needsReloading());
    EXPECT_EQ(contentOf(path()), mixed);
}

TEST_F(Rekordbox, aFailedSaveIsAnErrorAndALineWithTheDocument) {
    host->setLocalizer([](const std::string& text) { return "de: " + text; });
    const auto database = opened(mixed);
    ZALRekordboxDatabase::setUserRekordboxDatabaseFileURL(root() + "/no/such/folder.xml");
    const LogCapture log;
    ZALError error;
    EXPECT_FALSE(database->save(&error));
    EXPECT_EQ(error.code, ZALErrorCode::rekordboxCollectionUnwritable);
    EXPECT_EQ(error.localizedDescription, "de: Error saving Rekordbox collection file.");
    EXPECT_TRUE(error.underlyingError);
    EXPECT_THAT(log.lines(),
                ElementsAre(testing::AllOf(testing::StartsWith("Failed to write to Rekordbox DB (<?xml "),
                                           HasSubstr("</DJ_PLAYLISTS>\n): "))));
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
