#include "support/CollectionFixtures.h"
#include "support/LogCapture.h"

#include <zaltag/platform/ZALFolderBookmarks.h>
#include <zaltag/traktor/ZALTraktorDatabase.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class Traktor : public testing::Test, protected CollectionHost {
  protected:
    Traktor() { host->setBootVolumeName("Disk"); }

    std::shared_ptr<ZALTraktorDatabase> opened(const std::string& content) {
        ZALTraktorDatabase::setUserTraktorDatabaseFileURL(file("collection.nml", content));
        return ZALTraktorDatabase::initWithTraktorDatabaseFileAtURL(path());
    }
    std::string savedFrom(const std::string& content) {
        EXPECT_TRUE(opened(content)->save());
        return contentOf(path());
    }
    std::string path() const { return root() + "/collection.nml"; }
    // Makes a version folder, with a collection or without one.
    void version(const std::string& name, bool hasFile = true) const {
        std::filesystem::create_directories(root() + "/Native Instruments/" + name);
        if (hasFile) file("Native Instruments/" + name + "/collection.nml", "<NML/>");
    }
};

}  // namespace

TEST_F(Traktor, anEntryIsDatedASecondBeforeItsFile) {
    const std::string audio = file("a.mp3", "");
    const auto set = [&audio](std::chrono::sys_seconds time) {
        std::filesystem::last_write_time(
            audio, std::chrono::file_clock::from_sys(time + std::chrono::nanoseconds(500)));
    };
    std::string dir = root();
    for (auto at = dir.find('/'); at != std::string::npos; at = dir.find('/', at + 2)) {
        dir.replace(at, 1, "/:");
    }
    const std::string entry = "<NML><COLLECTION><ENTRY MODIFIED_DATE='' MODIFIED_TIME=''><LOCATION DIR='" +
                              dir + "/:' FILE='a.mp3'/><CUE_V2/></ENTRY></COLLECTION></NML>";
    const auto day = std::chrono::sys_days(std::chrono::year(2024) / 3 / 9);
    set(day + std::chrono::seconds(36005));
    EXPECT_THAT(savedFrom(entry), HasSubstr(R"(MODIFIED_DATE="2024/3/9" MODIFIED_TIME="36004")"));
    set(day);
    EXPECT_THAT(savedFrom(entry), HasSubstr(R"(MODIFIED_DATE="2024/3/8" MODIFIED_TIME="86399")"));
}

TEST_F(Traktor, playlistsKeepOrderRepeatsAndTheirTracks) {
    const LogCapture log;
    const auto key = [](const char* type, const char* value) {
        return "<ENTRY><PRIMARYKEY TYPE='" + std::string(type) + "' " + value + "/></ENTRY>";
    };
    const auto database = opened(
        "<NML><COLLECTION><ENTRY><LOCATION VOLUME='V' DIR='/:' FILE='a'/></ENTRY>"
        "<ENTRY><LOCATION VOLUME='V' DIR='/:' FILE='b'/></ENTRY><ENTRY/></COLLECTION>"
        "<PLAYLISTS><NODE TYPE='FOLDER'><SUBNODES><NODE TYPE='PLAYLIST' NAME='one'><PLAYLIST>" +
        key("TRACK", "KEY='V/:b'") + key("TRACK", "KEY='gone'") + key("STEM", "KEY='V/:a'") +
        key("TRACK", "KEY='V/:a'") + key("TRACK", "") + key("TRACK", "KEY='V/:b'") +
        "</PLAYLIST></NODE><NODE TYPE='FOLDER'><SUBNODES><NODE TYPE='PLAYLIST'/></SUBNODES></NODE>"
        "<NODE TYPE='SMARTLIST'/><NODE TYPE='PLAYLIST'/></SUBNODES></NODE></PLAYLISTS></NML>");
    const auto playlists = database->playlists();
    EXPECT_THAT(log.lines(), ElementsAre("failed to find Traktor playlist track for key: gone",
                                         "failed to find Traktor playlist track for key: (null)"));
    ASSERT_TRUE(opened("<NML/>")->playlists().empty());
    ASSERT_TRUE(database->reload());
    ASSERT_EQ(playlists.size(), 2U);
    EXPECT_EQ(playlists[0]->name(), "one");
    EXPECT_EQ(playlists[1]->name(), std::nullopt);
    std::vector<std::string> names;
    for (const auto& track : playlists[0]->tracks()) {
        names.push_back(track->filename().value());
    }
    EXPECT_THAT(names, ElementsAre("b", "a", "b")) << "copies outlive a load";
}

TEST_F(Traktor, isNotWrittenWhileTraktorRuns) {
    const auto database = opened("<NML/>");
    host->setLocalizer([](const std::string& text) { return "de: " + text; });
    host->setRunningPrograms([] { return std::vector<std::string>{"bash", "Traktor Pro 3"}; });
    ZALError error;
    EXPECT_FALSE(database->save(&error));
    EXPECT_EQ(error.code, ZALErrorCode::traktorRunning);
    EXPECT_EQ(error.localizedRecoverySuggestion,
              "de: Unable to export cue points to Traktor because Traktor is currently running. Please quit "
              "Traktor and try again.");
}

TEST_F(Traktor, theOldestVersionFolderIsTaken) {
    EXPECT_EQ(ZALTraktorDatabase::traktorDatabaseFileURL(), std::nullopt);
    for (const char* name : {"Traktor Pro", "Traktor 3.4.0", "My Traktor 1.0", "Traktor 1.2.3.4",
                             "Traktor 3.11.1", "Other/Traktor 1.0", "Traktor 2.11.3"}) {
        version(name);
    }
    const std::string top = root() + "/Native Instruments/";
    const std::string oldest = top + "Traktor 2.11.3/collection.nml";
    EXPECT_EQ(ZALTraktorDatabase::traktorDatabaseFileURL(), oldest);
    version("Traktor 2.11.3/1", false);  // "2.11.3/1" has one point too many
    EXPECT_EQ(ZALTraktorDatabase::traktorDatabaseFileURL(), oldest);
    version("Traktor 2/0");  // a point matches a slash as well
    EXPECT_EQ(ZALTraktorDatabase::traktorDatabaseFileURL(), std::nullopt) << "\"2\" has no collection";
    file("Native Instruments/Traktor 2/collection.nml", "<NML/>");
    EXPECT_EQ(ZALTraktorDatabase::traktorDatabaseFileURL(), top + "Traktor 2/collection.nml");

    const auto inFolder = ZALTraktorDatabase::traktorDBPathInPermittedFolder;
    EXPECT_EQ(inFolder(top), top + "Traktor 2/collection.nml");
    EXPECT_EQ(inFolder(top + "Traktor 3.4.0/"), top + "Traktor 3.4.0/collection.nml");
    EXPECT_EQ(inFolder(top + "Traktor Pro"), std::nullopt);

    ZALTraktorDatabase::setUserTraktorDatabaseFileURL("/mine.nml");
    EXPECT_EQ(ZALTraktorDatabase::traktorDatabaseFileURL(), "/mine.nml");
    host->setEnvironment([](const std::string&) { return ZALNullableString("in a sandbox"); });
    EXPECT_EQ(ZALTraktorDatabase::traktorDatabaseFileURL(), std::nullopt);
    ZALTraktorDatabase::setTraktorDatabasePermissionsFolder(top + "Traktor 3.4.0");
    EXPECT_EQ(ZALTraktorDatabase::traktorDatabaseFileURL(), top + "Traktor 3.4.0/collection.nml");
}
