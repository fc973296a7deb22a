#pragma once

#include <zaltag/platform/ZALFileSystem.h>
#include <zaltag/platform/ZALHost.h>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

/// The machine's file system with a count of what is done and operations that fail on demand. The host's file
/// system for as long as it is installed. One thread directs it; files may be used from several.
class FaultyFileSystem final : public ZALFileSystem, public std::enable_shared_from_this<FaultyFileSystem> {
  public:
    enum class Operation {
        open,
        create,
        read,
        write,
        copy,
        truncate,
        sync,
        look,
        keepAttributes,
        lock,
        rename,
        unlink,
        resolve
    };

    /// Installs itself in the host until it is uninstalled.
    static std::shared_ptr<FaultyFileSystem> install();
    static void uninstall() { ZALHost::shared().setFileSystem(nullptr); }

    /// The n-th operation from now on fails, from 1; 0 for none. Reads do not count. A write that fails has
    /// written half of its bytes.
    void failAt(int n);
    /// Whether that operation was reached.
    bool hasFailed() const { return failAt_ > 0 && steps_ >= failAt_; }
    /// Every operation of a kind fails from now on, or no longer.
    void failAll(Operation operation, bool fails = true) { failing_[operation] = fails; }
    /// Calls a function before the n-th operation of a kind from now on, once.
    void before(Operation operation, int n, std::function<void()> function) {
        hook_ = {operation, count(operation) + n, std::move(function)};
    }
    /// Copies find no descriptors, as if the kernel refused them.
    void refuseKernelCopies() { kernelCopies_ = false; }

    int count(Operation operation) const;
    void resetCounts() { counts_.clear(); }

    ZALFileKind kindOfFile(const std::string& path) const override;
    std::error_code attributes(const std::string& path, ZALFileAttributes& attributes) override;
    std::error_code canonicalPath(const std::string& path, std::string& canonical) override;
    std::unique_ptr<ZALFileHandle> open(const std::string& path, bool forWriting,
                                        std::error_code& error) override;
    std::unique_ptr<ZALFileHandle> create(const std::string& path, std::uint32_t mode,
                                          std::error_code& error) override;
    std::error_code rename(const std::string& from, const std::string& to) override;
    std::error_code unlink(const std::string& path) override;
    std::error_code enumerate(const std::string& folder,
                              const std::function<ZALFolderWalk(const std::string&)>& visit) override;
    std::error_code createFolders(const std::string& path, std::uint32_t mode) override;
    std::error_code syncFolder(const std::string& path) override;

  private:
    class Handle;

    std::error_code step(Operation operation);
    template <typename Function>
    std::error_code tried(Operation operation, Function function) {
        const auto error = step(operation);
        return error ? error : function();
    }
    std::unique_ptr<ZALFileHandle> wrapped(std::unique_ptr<ZALFileHandle> handle);

    const std::shared_ptr<ZALFileSystem> machine_ = ZALFileSystem::machine();
    std::mutex mutex_;  // of what operations change
    std::map<Operation, int> counts_;
    std::map<Operation, bool> failing_;
    struct {
        Operation operation;
        int count;
        std::function<void()> function;
    } hook_{};
    bool kernelCopies_ = true;
    int steps_ = 0;
    int failAt_ = 0;
};
