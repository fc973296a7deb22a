#include "support/FaultInjection.h"

#include "support/AudioFixtures.h"
#include "support/FaultyFileSystem.h"
#include "support/LogCapture.h"

#include <cstdlib>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// A folder with one file in it, and what may become of them.
class Site {
  public:
    explicit Site(const SaveCase& row)
        : name_(row.name), before_(row.file()), path_(folder_.write(name_, before_)) {
        if (row.firstHalf) firstHalf_ = saved(row.firstHalf);
        if (row.secondHalf) secondHalf_ = saved(row.secondHalf);
        after_ = saved(row.openAndEdit);
    }

    const std::string& path() const { return path_; }
    void reset() const { folder_.write(name_, before_); }
    /// As the file must be after a save with this result.
    bool isWhole(bool saved) const { return isHalfNew(saved) || (saved ? isNew() : isOld()); }
    bool isOld() const { return contentsOf(path_) == before_; }
    bool isNew() const { return contentsOf(path_) == after_; }
    /// The file when the first half, or the second half, of a save failed and the other did not.
    bool isHalfNew(bool first) const {
        const ZALData& half = first ? firstHalf_ : secondHalf_;
        return !half.empty() && contentsOf(path_) == half;
    }
    bool isAlone() const {
        int count = 0;
        for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
            ++count;
        }
        return count == 1;
    }

  private:
    ZALData saved(const SaveCase::Edit& openAndEdit) const {
        reset();
        const auto save = openAndEdit(path_);
        if (!save || !save()) throw std::runtime_error("does not save: " + name_);
        ZALData after = contentsOf(path_);
        if (after == before_) throw std::runtime_error("the save changes nothing: " + name_);
        return after;
    }

    const std::string name_;
    const ZALData before_;
    const TemporaryFolder folder_;
    const std::string path_;
    ZALData after_;
    ZALData firstHalf_;
    ZALData secondHalf_;
};

class Report {
  public:
    Report(FaultResult& result, const std::string& what) : result_(result), what_(what) {}
    void expect(bool holds, const std::string& promise) {
        if (!holds) result_.damage.push_back(what_ + ": " + promise);
    }

  private:
    FaultResult& result_;
    std::string what_;
};

// How a run of the outside program ended.
struct Run {
    bool faulted = false;
    bool killed = false;
    bool saved = false;
};

Run runSaveOne(const SaveCase& row, const std::string& path, int point, OutsideFault fault) {
    int report[2];
    if (::pipe2(report, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    const TemporaryFolder folder;  // for what a killed program leaves
    std::string variables[] = {
        "ZALTAG_FAULT_POINT=" + std::to_string(point),
        "ZALTAG_FAULT_ROOT=" + std::filesystem::path(path).parent_path().string(),
        fault == OutsideFault::killing ? "ZALTAG_FAULT_KILLS=1" : "ZALTAG_FAULT_KILLS=0",
        point > 0 ? "LD_PRELOAD=" ZALTAG_FAULT_SHIM : "LD_PRELOAD=", "TMPDIR=" + folder.path().string()};
    std::vector<char*> environment;
    for (std::string& variable : variables) {
        environment.push_back(variable.data());
    }
    environment.push_back(nullptr);
    char* const arguments[] = {const_cast<char*>(ZALTAG_SAVE_ONE), const_cast<char*>(row.name.c_str()),
                               const_cast<char*>(path.c_str()), nullptr};
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, report[1], 100);  // where the shim says that it struck
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int spawned =
        ::posix_spawn(&child, ZALTAG_SAVE_ONE, &actions, nullptr, arguments, environment.data());
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(report[1]);
    if (spawned != 0) throw std::runtime_error("cannot start " ZALTAG_SAVE_ONE);
    char struck = 0;
    Run run;
    run.faulted = ::read(report[0], &struck, 1) == 1;
    ::close(report[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    run.killed = WIFSIGNALED(status);
    run.saved = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return run;
}

}  // namespace

FaultResult tryFaults(const SaveCase& row) {
    const Site site(row);
    FaultResult result;
    for (int n = 1;; ++n) {
        site.reset();
        const LogCapture log;
        const auto files = FaultyFileSystem::install();
        files->failAt(n);
        Report report(result, row.name + " at operation " + std::to_string(n));
        auto save = row.openAndEdit(site.path());
        const bool failedWhileOpening = files->hasFailed();
        const bool saved = save && save();
        const bool failed = files->hasFailed();
        files->failAt(0);
        report.expect(site.isWhole(saved), "the file is as the result says");
        report.expect(site.isAlone(), "nothing is left beside the file");
        report.expect(saved || failedWhileOpening || log.lines().size() == 1, "one line is logged");
        report.expect(!saved || site.isNew() || !log.lines().empty(), "a half that failed is logged");
        if (failedWhileOpening) {
            save = nullptr;  // what it changed of the host goes first
            save = row.openAndEdit(site.path());
        }
        report.expect(save && save() && site.isNew() && site.isAlone(), "a later save succeeds");
        FaultyFileSystem::uninstall();
        if (!failed) {
            report.expect(saved, "a save without faults succeeds");
            return result;
        }
        ++result.points;
    }
}

FaultResult tryOutsideFaults(const SaveCase& row, OutsideFault fault) {
    const Site site(row);
    FaultResult result;
    for (int n = 1;; ++n) {
        site.reset();
        Report report(result, row.name + " at system call " + std::to_string(n));
        const Run run = runSaveOne(row, site.path(), n, fault);
        if (run.killed) {
            report.expect(site.isWhole(false) || site.isWhole(true), "the file is whole");
        } else {
            report.expect(site.isWhole(run.saved), "the file is as the result says");
            report.expect(site.isAlone(), "nothing is left beside the file");
        }
        const Run again = runSaveOne(row, site.path(), 0, fault);
        report.expect(again.saved && site.isNew() && site.isAlone(), "the next save clears up");
        if (!run.faulted) {
            report.expect(run.saved, "a save without faults succeeds");
            return result;
        }
        ++result.points;
    }
}
