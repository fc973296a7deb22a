#include "platform/SafeFile.h"

#include "platform/FileReplacement.h"
#include "support/AudioFixtures.h"
#include "support/FaultyFileSystem.h"
#include "support/Hex.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>

#include <csignal>

#include <fcntl.h>
#include <grp.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

using Operation = FaultyFileSystem::Operation;
using testing::ElementsAre;
using testing::HasSubstr;
using zal::SafeFile;

std::string textOf(const ZALData& bytes) {
    return {bytes.begin(), bytes.end()};
}

// Text that never repeats within a few pages, so that a moved byte shows.
std::string someText(std::size_t length) {
    std::string out;
    for (int i = 0; out.size() < length; ++i) {
        out += std::to_string(i) + " ";
    }
    return out.substr(0, length);
}

ZALDataView viewOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string readAll(SafeFile& file, std::uint64_t position = 0) {
    ZALData buffer(file.length() + 1);
    buffer.resize(file.readAt(position, buffer));
    return textOf(buffer);
}

struct stat statusOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
    return status;
}

// Runs a function in a process of its own, where it may give up what the tests need; true when it gives true.
bool holdsInChild(const std::function<bool()>& function) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(function() ? 0 : 1);
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

class SafeFileTest : public testing::Test {
  protected:
    SafeFileTest() : path_(folder_.write("song", viewOf(old_))) {}
    ~SafeFileTest() override {
        FaultyFileSystem::uninstall();
        ZALHost::shared().setSaveMode(ZALSaveMode::safe);
    }

    // Of a file that is an hour old, so that every later change shows in its time.
    std::unique_ptr<SafeFile> opened() const {
        std::error_code notOurs;
        const auto now = std::filesystem::last_write_time(path_);
        std::filesystem::last_write_time(path_, now - std::chrono::hours(1), notOurs);
        return SafeFile::open(path_, false);
    }
    std::string content() const { return textOf(contentsOf(path_)); }
    std::string inFolder(const std::string& name) const { return (folder_.path() / name).string(); }
    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
            names.push_back(entry.path().filename().string());
        }
        return names;
    }

    const LogCapture log_;
    const TemporaryFolder folder_{std::filesystem::temp_directory_path()};  // on a real file system
    const std::string old_ = someText(200'000);
    const std::string path_;
};

TEST_F(SafeFileTest, writesInPlaceOnlyWhatLiesInOnePage) {
    const auto files = FaultyFileSystem::install();
    const std::tuple<const char*, std::uint64_t, std::uint64_t, ZALSaveMode, bool> rows[] = {
        {"one byte", 5000, 5000, ZALSaveMode::safe, true},
        {"a whole page", 4096, 8191, ZALSaveMode::safe, true},
        {"two bytes of two pages", 4095, 4096, ZALSaveMode::safe, false},
        {"both ends", 0, 199'999, ZALSaveMode::safe, false},
        {"both ends", 0, 199'999, ZALSaveMode::inPlace, true},
    };
    for (const auto& [what, first, last, mode, inPlace] : rows) {
        ZALHost::shared().setSaveMode(mode);
        folder_.write("song", viewOf(old_));
        const auto file = opened();
        std::string changed = old_;
        changed[first] = changed[last] = 'X';
        file->write(0, viewOf(changed));  // what really differs decides
        const auto inode = statusOf(path_).st_ino;
        files->resetCounts();
        ASSERT_TRUE(file->commit()) << what;
        file->insert(7, viewOf("abc"));
        file->remove(7, 3);
        ASSERT_TRUE(file->commit()) << "nothing differs now";
        EXPECT_TRUE(content() == changed) << what;
        EXPECT_EQ(statusOf(path_).st_ino == inode, inPlace) << what;
        EXPECT_EQ(files->count(Operation::write), 1) << what;
        EXPECT_EQ(files->count(Operation::create), inPlace ? 0 : 1) << what;
        EXPECT_EQ(files->count(Operation::sync), inPlace ? 0 : 2) << what;
    }
}

TEST_F(SafeFileTest, keepsModeOwnerAndAttributes) {
    if (::geteuid() != 0) GTEST_SKIP() << "LEFT OUT: only root may give files away";
    // Access for one more user than the bits tell; and a folder that gives new files such a list.
    const ZALData list = fromHex(
        "02000000 01000600 FFFFFFFF 02000400 E7030000 04000400 FFFFFFFF 10000400 FFFFFFFF 20000000 FFFFFFFF");
    const char* const folder = folder_.path().c_str();
    ASSERT_EQ(::setxattr(folder, "system.posix_acl_default", list.data(), list.size(), 0), 0);
    ASSERT_EQ(::setxattr(path_.c_str(), "user.note", "kept", 4, 0), 0);
    ASSERT_EQ(::setxattr(path_.c_str(), "user.empty", "", 0, 0), 0);
    ASSERT_EQ(::chown(path_.c_str(), 1234, 2345), 0);
    for (const bool withList : {false, true}) {
        ASSERT_EQ(withList ? ::setxattr(path_.c_str(), "system.posix_acl_access", list.data(), list.size(), 0)
                           : ::chmod(path_.c_str(), 0462),
                  0);
        const struct stat before = statusOf(path_);
        const auto file = opened();
        file->insert(0, viewOf("x"));
        ASSERT_TRUE(file->commit());
        const struct stat after = statusOf(path_);
        EXPECT_TRUE(after.st_ino != before.st_ino && after.st_mode == before.st_mode);
        EXPECT_TRUE(after.st_uid == 1234 && after.st_gid == 2345);
        ZALData value(100);
        const ssize_t length =
            ::getxattr(path_.c_str(), "system.posix_acl_access", value.data(), value.size());
        EXPECT_EQ(length, withList ? static_cast<ssize_t>(list.size()) : -1);
        EXPECT_TRUE(!withList || std::equal(list.begin(), list.end(), value.begin()));
        EXPECT_EQ(::getxattr(path_.c_str(), "user.note", value.data(), value.size()), 4);
        EXPECT_EQ(::getxattr(path_.c_str(), "user.empty", value.data(), value.size()), 0);
    }
}

TEST_F(SafeFileTest, followsSymbolicLinksAndLeavesHardLinks) {
    const std::string symbolic = inFolder("symbolic");
    const std::string hard = inFolder("hard");
    ASSERT_EQ(::symlink("song", symbolic.c_str()), 0);
    ASSERT_EQ(::link(path_.c_str(), hard.c_str()), 0);
    const auto file = SafeFile::open(symbolic, false);
    file->write(0, viewOf("X"));  // alone it would be a write in place
    ASSERT_TRUE(file->commit());
    EXPECT_TRUE(content() == ("X" + old_.substr(1)));
    EXPECT_TRUE(textOf(contentsOf(hard)) == old_);
    EXPECT_TRUE(std::filesystem::is_symlink(symbolic));
}

TEST_F(SafeFileTest, leavesAFileAloneThatIsNotTheOneOpened) {
    const std::string other = someText(old_.size() + 1);
    const std::tuple<std::function<void()>, std::string, const char*> rows[] = {
        {[&] { std::filesystem::rename(folder_.write("new", viewOf(other)), path_); }, other, "replaced"},
        {[&] { folder_.write("song", viewOf(other)); }, other, "changed"},
        {[&] { folder_.write("song", viewOf(other.substr(1))); }, other.substr(1), "changed"},
        {[&] { std::filesystem::resize_file(path_, 1000); }, old_.substr(0, 1000), "could not be read whole"},
        {[&] { ::unlink(path_.c_str()); }, "", "No such file"},
    };
    for (const bool grows : {false, true}) {
        for (const auto& [change, left, reason] : rows) {
            folder_.write("song", viewOf(old_));
            const auto file = opened();
            change();
            readAll(*file, 150'000);
            file->insert(0, viewOf("Y"), grows ? 0 : 1);
            const std::size_t lines = log_.lines().size();
            EXPECT_FALSE(file->commit());
            EXPECT_FALSE(file->commit());
            EXPECT_TRUE(content() == left);
            ASSERT_EQ(log_.lines().size(), lines + 2);
            EXPECT_THAT(log_.lines().back(), testing::AllOf(HasSubstr(path_), HasSubstr(reason)));
            EXPECT_LE(names().size(), 1u);
        }
    }
}

TEST_F(SafeFileTest, twoSavesDoNotMix) {
    const std::string temporary = zal::FileReplacement::temporaryPath(path_);
    for (const std::string& locked : {path_, temporary}) {
        const int running = ::open(locked.c_str(), O_RDWR | O_CREAT, 0600);
        ASSERT_EQ(::flock(running, LOCK_EX), 0);
        const auto file = opened();
        file->insert(0, viewOf("x"));
        EXPECT_FALSE(file->commit());
        EXPECT_THAT(log_.lines().back(), HasSubstr("another save"));
        EXPECT_TRUE(content() == old_);
        EXPECT_TRUE(std::filesystem::exists(locked));
        ::close(running);
        EXPECT_TRUE(locked == path_ || file->commit()) << "what is left over unlocked goes";
    }
    folder_.write(std::filesystem::path(temporary).filename(), viewOf("left"));
    const auto inPlace = opened();
    inPlace->write(0, viewOf("x"));
    EXPECT_TRUE(inPlace->commit()) << "with any save";
    EXPECT_THAT(names(), ElementsAre("song"));
    EXPECT_TRUE(content() == "x" + old_);
}

// What another process can do between two of our steps.
TEST_F(SafeFileTest, looksAgainBeforeItActs) {
    const auto files = FaultyFileSystem::install();
    const std::string temporary = zal::FileReplacement::temporaryPath(path_);
    const std::string name = std::filesystem::path(temporary).filename();
    int running = -1;
    const auto lockOther = [&] {
        running = ::open(temporary.c_str(), O_RDWR | O_CREAT, 0600);
        ASSERT_EQ(::flock(running, LOCK_EX), 0);
    };
    const auto otherComes = [&] {
        ::unlink(temporary.c_str());
        lockOther();
    };
    const std::tuple<const char*, bool, Operation, int, std::function<void()>, bool> rows[] = {
        {"the target is changed meanwhile", false, Operation::sync, 1,
         [&] { folder_.write("song", viewOf(old_)); }, false},
        {"what was left over became another's", true, Operation::lock, 2, otherComes, true},
        {"another takes the new file for left over", false, Operation::lock, 2, lockOther, true},
        {"and cleared it", false, Operation::look, 2, otherComes, true},
        {"and that late", false, Operation::sync, 1, otherComes, true},
    };
    for (const auto& [what, leftOver, operation, count, happens, otherStays] : rows) {
        folder_.write("song", viewOf(old_));
        if (leftOver) folder_.write(name, viewOf("left"));
        const auto file = opened();
        file->insert(0, viewOf("x"));
        files->before(operation, count, happens);
        EXPECT_FALSE(file->commit()) << what;
        EXPECT_TRUE(content() == old_) << what;
        EXPECT_EQ(std::filesystem::exists(temporary), otherStays) << what;
        ::unlink(temporary.c_str());
        ::close(running);
    }
}

TEST_F(SafeFileTest, longNamesAndTakenNames) {
    const std::string path = folder_.write(std::string(255, 'n'), viewOf(old_));
    const auto file = SafeFile::open(path, false);
    const std::string temporary = zal::FileReplacement::temporaryPath(path);
    std::filesystem::create_directory(temporary);
    file->insert(0, viewOf("x"));
    EXPECT_FALSE(file->commit()) << "a folder is not what a killed save leaves";
    std::filesystem::remove(temporary);
    ASSERT_EQ(::symlink(path_.c_str(), temporary.c_str()), 0);
    EXPECT_TRUE(file->commit());
    EXPECT_TRUE(textOf(contentsOf(path)) == "x" + old_);
    EXPECT_TRUE(content() == old_) << "nothing is written through a link under that name";
}

TEST_F(SafeFileTest, refusedPermissionsLeaveTheFileWhole) {
    if (::geteuid() != 0) GTEST_SKIP() << "LEFT OUT: only root may become another user";
    ASSERT_EQ(::chmod(folder_.path().c_str(), 0777), 0);
    const std::tuple<const char*, mode_t, mode_t, bool, bool, bool> rows[] = {
        {"its own", 0644, 0777, true, true, true},
        {"not writable", 0444, 0777, true, false, false},
        {"in a folder that is not writable", 0666, 0755, true, true, false},
        {"another user's, which becomes its own", 0666, 0777, false, true, true},
    };
    for (const auto& [what, fileMode, folderMode, owned, opensForEditing, grows] : rows) {
        folder_.write("song", viewOf(old_));
        ASSERT_EQ(::chown(path_.c_str(), owned ? 65534 : 0, owned ? 65534 : 0), 0);
        ASSERT_EQ(::chmod(path_.c_str(), fileMode), 0);
        ASSERT_EQ(::chmod(folder_.path().c_str(), folderMode), 0);
        EXPECT_TRUE(holdsInChild([&, writable = opensForEditing, growing = grows] {
            if (::setgroups(0, nullptr) != 0 || ::setgid(65534) != 0 || ::setuid(65534) != 0) return false;
            const auto file = opened();
            if (file->readOnly() == writable) return false;
            file->write(0, viewOf("X"));
            if (file->commit() != writable) return false;
            file->insert(0, viewOf("Y"));
            return file->commit() == growing;
        })) << what;
        std::string kept = old_;
        if (opensForEditing) kept[0] = 'X';
        EXPECT_TRUE(content() == (grows ? "Y" + kept : kept)) << what;
        EXPECT_THAT(names(), ElementsAre("song")) << what;
    }
}

TEST_F(SafeFileTest, aFileSizeLimitLeavesTheFileWhole) {
    EXPECT_TRUE(holdsInChild([&] {
        ::signal(SIGXFSZ, SIG_IGN);
        const auto limit = [](rlim_t bytes) {
            const struct rlimit most { bytes, RLIM_INFINITY };
            ::setrlimit(RLIMIT_FSIZE, &most);
        };
        // A growing save fails while there is no room, and succeeds on the same object once there is.
        limit(100'000);
        const auto growing = opened();
        growing->insert(0, viewOf("new "));
        const bool failed = !growing->commit() && content() == old_;
        limit(1'000'000);
        if (!failed || !growing->commit() || content() != "new " + old_) return false;
        // A write in place that the limit cuts inside its page is undone.
        limit(4100);
        const auto file = opened();
        file->write(4096, viewOf("changed!"));
        return !file->commit() && content() == "new " + old_;
    }));
    EXPECT_THAT(names(), ElementsAre("song"));
}

TEST_F(SafeFileTest, replacesWholeFiles) {
    const std::string fresh = inFolder("fresh"), link = inFolder("link"), nowhere = inFolder("nowhere");
    ASSERT_EQ(::symlink("song", link.c_str()) + ::symlink("missing", nowhere.c_str()), 0);
    ASSERT_EQ(::chmod(path_.c_str(), 0640), 0);
    const std::string large = someText(700'000);
    const mode_t mask = ::umask(027);
    EXPECT_TRUE(zal::replaceFileContents(fresh, [&](const zal::ChunkSink& sink) {
        return sink(viewOf("|")) && sink(viewOf(large)) && sink(viewOf("|"));
    }));
    ::umask(mask);
    EXPECT_TRUE(textOf(contentsOf(fresh)) == "|" + large + "|");
    EXPECT_EQ(statusOf(fresh).st_mode & 0777u, 0640u) << "a new file follows the mask";
    EXPECT_TRUE(zal::replaceFileContents(link, viewOf("short")));
    EXPECT_TRUE(content() == "short" && std::filesystem::is_symlink(link));
    EXPECT_EQ(statusOf(path_).st_mode & 0777u, 0640u);
    EXPECT_FALSE(zal::replaceFileContents(
        path_, [](const zal::ChunkSink& sink) { return sink(viewOf("half")) && false; }));
    for (const std::string& path : {nowhere, inFolder("no/folder"), folder_.path().string()}) {
        EXPECT_FALSE(zal::replaceFileContents(path, viewOf("x"))) << path;
    }
    const auto files = FaultyFileSystem::install();
    int n = 1;
    for (files->failAt(n); !zal::replaceFileContents(path_, viewOf("after")); files->failAt(++n)) {
        EXPECT_TRUE(content() == "short") << n;
    }
    EXPECT_EQ(n, static_cast<int>(log_.lines().size()) - 3);
    EXPECT_TRUE(content() == "after");
    EXPECT_THAT(names(), testing::UnorderedElementsAre("fresh", "link", "nowhere", "song"));
}

}  // namespace
