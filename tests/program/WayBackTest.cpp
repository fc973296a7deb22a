// A run of the program is stopped at every single operation on the file system, and taken back.

#include "Commands.h"
#include "support/AudioFixtures.h"
#include "support/CollectionFixtures.h"
#include "support/FaultyFileSystem.h"
#include "support/Hex.h"

#include <gmock/gmock.h>
#include <CLI/CLI.hpp>

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace {

namespace fs = std::filesystem;
using Operation = FaultyFileSystem::Operation;

constexpr int faultMissed = 1 << 6;  // in an exit status

class WayBack : public testing::Test {
  protected:
    void SetUp() override {
        ::setenv("XDG_STATE_HOME", (folder_.path() / "state").c_str(), 1);
        fs::create_directories(folder_.path() / "state/zaltag");
        song_ = folder_.write("a.mp3", mpegFrames());
        other_ = folder_.write("b.mp3", mpegFrames());
        const std::string xml =
            "<DJ_PLAYLISTS><COLLECTION><TRACK TrackID='1' TotalTime='9' Location='file://" + song_ +
            "'/></COLLECTION></DJ_PLAYLISTS>";
        collection_ = folder_.write("rekordbox.xml", bytesOf(xml));
        ASSERT_EQ(run({"cues", "set", song_, other_, "--to", "zal", "1=in", "2=out"}), 0);
        before_ = {contentsOf(collection_), contentsOf(song_), contentsOf(other_)};
    }

    // Runs the program in a process of its own, after `prepare`. Gives its exit status.
    int run(
        std::vector<std::string> words, const std::function<void()>& prepare = [] {},
        const std::function<int()>& end = [] { return 0; }) const {
        std::fflush(nullptr);
        const pid_t child = ::fork();
        if (child == 0) {
            for (std::FILE* stream : {stdout, stderr}) {
                if (std::freopen("/dev/null", "w", stream) == nullptr) ::_exit(99);
            }
            prepare();
            const int status = runCommand(std::move(words));
            ::_exit(status | end());
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : 98;
    }
    static int runCommand(std::vector<std::string> words) {
        CLI::App program;
        Command chosen;
        addCuesCommand(program, chosen);
        addSyncCommand(program, chosen);
        addUndoCommand(program, chosen);
        std::reverse(words.begin(), words.end());
        program.parse(words);
        return chosen();
    }

    int sync(
        const std::function<void()>& prepare = [] {},
        const std::function<int()>& end = [] { return 0; }) const {
        return run({"sync", folder_.path(), "--from", "zal", "--to", "rekordbox-hot", "--to", "serato",
                    "--rekordbox", collection_, "--jobs", "1"},
                   prepare, end);
    }
    // The same, with the n-th operation failing, or the last that does anything.
    int syncWithFault(int n, bool dies) const {
        std::shared_ptr<FaultyFileSystem> files;
        return sync(
            [&] {
                files = FaultyFileSystem::install();
                dies ? files->dieAt(n) : files->failAt(n);
            },
            [&] { return files->hasFailed() ? 0 : faultMissed; });
    }

    std::vector<ZALData> now() const {
        return {contentsOf(collection_), contentsOf(song_), contentsOf(other_)};
    }
    // What lies beside the collection under names that begin so.
    std::vector<std::string> beside(const std::string& begin) const {
        std::vector<std::string> paths;
        for (const auto& entry : fs::directory_iterator(folder_.path())) {
            if (entry.path().filename().string().starts_with(begin)) paths.push_back(entry.path());
        }
        return paths;
    }
    void startAnew() {
        folder_.write("rekordbox.xml", before_[0]);
        folder_.write("a.mp3", before_[1]);
        folder_.write("b.mp3", before_[2]);
        for (const std::string& path : beside("rekordbox")) {
            if (path != collection_) fs::remove(path);
        }
        fs::remove_all(folder_.path() / "state/zaltag");
    }

    TemporaryFolder folder_;
    std::string song_, other_, collection_;
    std::vector<ZALData> before_;
};

TEST_F(WayBack, leadsBackFromWhereverARunWasStopped) {
    ASSERT_EQ(sync(), 0);
    const std::vector<ZALData> after = now();
    for (const bool dies : {true, false}) {
        int n = 0;
        for (bool isMissed = false; !isMissed;) {
            startAnew();
            isMissed = (syncWithFault(++n, dies) & faultMissed) != 0;
            const ZALData collection = contentsOf(collection_);
            EXPECT_TRUE(collection == before_[0] || collection.size() == after[0].size()) << n;
            const std::vector<std::string> copies = beside("rekordbox.xml.before-zaltag-");
            for (const std::string& copy : copies) {
                EXPECT_TRUE(contentsOf(copy) == before_[0]) << n;
            }
            EXPECT_TRUE(collection == before_[0] || copies.size() == 1) << n;
            run({"undo"});
            // What the journal could not be told to have been written is left alone, with its copy beside it.
            EXPECT_TRUE(contentsOf(collection_) == before_[0] || copies.size() == 1) << n;
            const auto untouched = now();
            EXPECT_TRUE(run({"undo"}) == 1 && now() == untouched) << n;
        }
        EXPECT_GT(n, 60) << "points were tried";
    }
}

TEST_F(WayBack, aFullDiskLeavesEverythingAsItWas) {
    for (const auto& full :
         {std::vector{Operation::write}, {Operation::copy}, {Operation::write, Operation::copy}}) {
        const int status = sync([&] {
            const auto files = FaultyFileSystem::install();
            for (const Operation operation : full) {
                files->failAll(operation);
            }
        });
        EXPECT_EQ(status, 1);
        EXPECT_EQ(contentsOf(collection_), before_[0]);
        EXPECT_THAT(beside(""), testing::SizeIs(4)) << "the collection, two songs, the state folder";
    }
}

}  // namespace
