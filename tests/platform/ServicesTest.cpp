#include "platform/RunningPrograms.h"

#include "support/AudioFixtures.h"
#include "support/Hex.h"
#include "support/HostGuard.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <map>

#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

void put(const std::string& path, std::string_view text) {
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

std::string contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class Services : public testing::Test {
  protected:
    Services() {
        host_->setEnvironment([this](const std::string& name) {
            const auto value = environment_.find(name);
            return value == environment_.end() ? ZALNullableString() : value->second;
        });
    }

    std::string in(const std::string& name) const { return folder_.path() / name; }

    const HostGuard host_;
    const TemporaryFolder folder_;
    std::map<std::string, std::string> environment_{{"HOME", in("home")}};
    const std::string file_ = in("home/.config/zaltag/defaults.json");
};

TEST_F(Services, settingsOutliveTheProcess) {
    const auto defaults = host_->userDefaults();
    EXPECT_EQ(defaults->stringForKey("a"), std::nullopt);
    defaults->removeKey("a");
    EXPECT_FALSE(fs::exists(in("home"))) << "nothing was set";

    const ZALData bytes = fromHex("2F 00 FF");
    defaults->setString("text", "é\xFF");
    defaults->setData("data", bytes);
    defaults->setData("null", std::nullopt);
    const std::string written = contents(file_);
    environment_["XDG_CONFIG_HOME"] = in("other");
    EXPECT_FALSE(defaults->hasValueForKey("text")) << "another file";
    put(in("other/zaltag/defaults.json"), written);
    EXPECT_TRUE(defaults->stringForKey("text") == "é\xFF" && defaults->dataForKey("data") == bytes);
    EXPECT_FALSE(defaults->dataForKey("text") || defaults->stringForKey("data") ||
                 defaults->dataForKey("null"));
    EXPECT_TRUE(defaults->hasValueForKey("null"));

    put(in("other/zaltag/defaults.json"), R"({"foreign": [1], "text": "by another process"})");
    defaults->removeKey("text");
    EXPECT_EQ(contents(in("other/zaltag/defaults.json")), "{\n  \"foreign\": [\n    1\n  ]\n}\n");
}

TEST_F(Services, brokenSettingsAreKeptAndUnwrittenOnesTriedAgain) {
    const LogCapture log;
    const auto defaults = host_->userDefaults();
    put(file_, "{broken");
    EXPECT_FALSE(defaults->hasValueForKey("a") || defaults->hasValueForKey("a"));
    EXPECT_EQ(log.lines().size(), 1u);
    defaults->setString("a", "1");
    EXPECT_EQ(contents(file_ + ".broken"), "{broken");
    EXPECT_EQ(defaults->stringForKey("a"), "1");

    environment_["XDG_CONFIG_HOME"] = in("a file");
    put(in("a file"), "where the folder should be");
    defaults->setString("a", "2");
    EXPECT_EQ(log.lines().size(), 2u);
    fs::remove(in("a file"));
    defaults->synchronize();
    EXPECT_THAT(contents(in("a file/zaltag/defaults.json")), testing::HasSubstr(R"("a": "2")"));
}

class Storage final : public ZALCloudStorage {
  public:
    bool isUbiquitousItem(const std::string& path) override { return path.starts_with("/cloud/"); }
    ZALNullableString coordinateReading(const std::string& path, std::string& error) override {
        error = "offline";
        return path == "/cloud/here" ? ZALNullableString("/local/here") : std::nullopt;
    }
};

TEST_F(Services, filesOfACloudAreFetchedBeforeTheCallReturns) {
    const LogCapture log;
    host_->setCloudStorage(std::make_shared<Storage>());
    std::vector<std::string> seen;
    for (const char* path : {"/music/a", "/cloud/here", "/cloud/gone"}) {
        ZALTagCloudFileResolver::resolveCloudBeforeUsingFileAtUrl(
            path, [&](const ZALNullableString& local) { seen.push_back(local.value_or("null")); });
    }
    EXPECT_THAT(seen, ElementsAre("/music/a", "/local/here", "null"));
    EXPECT_THAT(log.lines(), ElementsAre("Could not download local file /cloud/gone from iCloud: offline"));
}

TEST_F(Services, bookmarksLeadToFoldersThatAreThere) {
    const auto bookmarks = host_->folderBookmarks();
    const std::string music = in("Müsic");
    EXPECT_EQ(bookmarks->bookmarkForFolder(music, 2048), std::nullopt);
    EXPECT_FALSE(bookmarks->startAccess(music));
    fs::create_directory(music);
    const auto bookmark = bookmarks->bookmarkForFolder(music + "/../Müsic/", 2048);
    ASSERT_TRUE(bookmark);
    EXPECT_EQ(bookmarks->resolveBookmark(*bookmark, 1024), music);
    EXPECT_TRUE(bookmarks->startAccess(music) && bookmarks->startAccess(music + "/"));
    fs::remove(music);
    bookmarks->stopAccess(music);
    EXPECT_EQ(bookmarks->accessCount(music), 1u);
    EXPECT_EQ(bookmarks->resolveBookmark(*bookmark, 1024), std::nullopt);
    EXPECT_EQ(bookmarks->resolveBookmark(bytesOf("."), 1024), std::nullopt);
}

TEST_F(Services, theDocumentsFolderIsTheUsers) {
    const std::string home = in("home");
    EXPECT_THAT(host_->documentsFolders(), ElementsAre(home + "/Documents"));
    const std::pair<const char*, std::string> cases[] = {
        {"# XDG_DOCUMENTS_DIR=\"/x\"\nXDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\nXDG_MUSIC_DIR=\"/m\"",
         home + "/Dokumente"},
        {"  XDG_DOCUMENTS_DIR=\"/a \\\"b\\\\\"", "/a \"b\\"},
        {"XDG_DOCUMENTS_DIR=\"/unclosed", home + "/Documents"},
        {"XDG_DOCUMENTS_DIR=\"relative\"", home + "/Documents"},
    };
    for (const auto& [line, folder] : cases) {
        put(home + "/.config/user-dirs.dirs", line);
        EXPECT_THAT(host_->documentsFolders(), ElementsAre(folder)) << line;
    }
    environment_ = {{"HOME", "relative"}};
    EXPECT_THAT(host_->documentsFolders(), ElementsAre());
}

TEST_F(Services, runningProgramsAreKnownByTheirExecutables) {
    const auto process = [&](const std::string& number, const std::string& executable,
                             std::string_view arguments) {
        put(in("proc/" + number + "/cmdline"), arguments);
        fs::create_symlink(executable, in("proc/" + number + "/exe"));
    };
    using namespace std::string_view_literals;
    process("1", "/usr/bin/editor (deleted)", "editor\0Traktor.exe\0"sv);
    process("20", "/usr/bin/wine64-preloader",
            "C:\\Program Files\\Traktor Pro 3\\Traktor Pro 3.exe\0x.exe\0"sv);
    process("21", "/usr/bin/wine64-preloader", "/home/dj/Other.EXE"sv);
    process(std::to_string(::getpid()), "/usr/bin/ourselves", "");
    process("self", "/usr/bin/ourselves", "");
    put(in("proc/300/cmdline"), "");  // one whose executable may not be seen
    EXPECT_THAT(zal::runningPrograms(in("proc")),
                ElementsAre("Other.EXE", "Traktor Pro 3.exe", "editor", "wine64-preloader"));

    EXPECT_FALSE(host_->runningPrograms().empty()) << "who started us is there";
}

}  // namespace
