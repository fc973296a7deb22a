#include <zaltag/platform/ZALFileSystem.h>

#include "base/Paths.h"
#include "platform/ExtendedAttributes.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

ZALFileHandle::~ZALFileHandle() = default;
ZALFileSystem::~ZALFileSystem() = default;

namespace {

constexpr std::uint32_t permissionBits = 07777;
// What one call moves at most, as the kernel limits it.
constexpr std::uint64_t transferMax = 0x7FFFF000;
constexpr std::size_t copyBufferSize = 1 << 20;

std::error_code errorOf(int number) {
    return {number, std::generic_category()};
}

// Repeats a system call while signals interrupt it.
template <typename Call>
auto uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

template <typename Call>
std::error_code done(Call call) {
    return uninterrupted(call) < 0 ? errorOf(errno) : std::error_code();
}

ZALFileKind kindOf(const struct stat& status) {
    if (S_ISREG(status.st_mode)) return ZALFileKind::regular;
    return S_ISDIR(status.st_mode) ? ZALFileKind::folder : ZALFileKind::other;
}

ZALFileAttributes attributesOf(const struct stat& status) {
    return {.kind = kindOf(status),
            .device = status.st_dev,
            .inode = status.st_ino,
            .size = static_cast<std::uint64_t>(status.st_size),
            .modified = std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec,
            .links = status.st_nlink,
            .mode = status.st_mode & permissionBits,
            .owner = status.st_uid,
            .group = status.st_gid};
}

// The kernel will not copy between these two files; reading and writing may still do.
bool needsPlainCopy(int number) {
    return number == EXDEV || number == EINVAL || number == ENOSYS || number == EOPNOTSUPP;
}

class MachineFileHandle final : public ZALFileHandle {
  public:
    explicit MachineFileHandle(int descriptor) : descriptor_(descriptor) {}
    ~MachineFileHandle() override { ::close(descriptor_); }
    MachineFileHandle(const MachineFileHandle&) = delete;
    MachineFileHandle& operator=(const MachineFileHandle&) = delete;

    std::error_code readAt(std::uint64_t position, std::span<std::uint8_t> buffer,
                           std::size_t& count) override {
        count = 0;
        while (count < buffer.size()) {
            const auto rest = buffer.subspan(count);
            const ssize_t n = uninterrupted([&] {
                return ::pread(descriptor_, rest.data(), rest.size(), static_cast<off_t>(position + count));
            });
            if (n < 0) return errorOf(errno);
            if (n == 0) break;
            count += static_cast<std::size_t>(n);
        }
        return {};
    }

    std::error_code writeAt(std::uint64_t position, ZALDataView bytes) override {
        while (!bytes.empty()) {
            const ssize_t n = uninterrupted([&] {
                return ::pwrite(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(position));
            });
            if (n <= 0) return errorOf(n < 0 ? errno : EIO);
            position += static_cast<std::uint64_t>(n);
            bytes = bytes.subspan(static_cast<std::size_t>(n));
        }
        return {};
    }

    std::error_code copyFrom(ZALFileHandle& source, std::uint64_t sourcePosition, std::uint64_t length,
                             std::uint64_t position) override {
        auto from = static_cast<off_t>(sourcePosition);
        auto to = static_cast<off_t>(position);
        while (length > 0 && source.descriptor() >= 0) {
            const ssize_t n = uninterrupted([&] {
                return ::copy_file_range(source.descriptor(), &from, descriptor_, &to,
                                         static_cast<std::size_t>(std::min(length, transferMax)), 0);
            });
            if (n < 0 && !needsPlainCopy(errno)) return errorOf(errno);
            if (n <= 0) break;  // a few file systems say 0 where they mean "not here"
            length -= static_cast<std::uint64_t>(n);
        }
        return copyPlainly(source, static_cast<std::uint64_t>(from), length, static_cast<std::uint64_t>(to));
    }

    std::error_code truncate(std::uint64_t length) override {
        return done([&] { return ::ftruncate(descriptor_, static_cast<off_t>(length)); });
    }

    std::error_code sync() override {
        return done([&] { return ::fsync(descriptor_); });
    }

    std::error_code attributes(ZALFileAttributes& attributes) override {
        struct stat status {};
        if (::fstat(descriptor_, &status) != 0) return errorOf(errno);
        attributes = attributesOf(status);
        return {};
    }

    std::error_code copyAttributesFrom(ZALFileHandle& source) override {
        ZALFileAttributes wanted;
        ZALFileAttributes present;
        if (const auto error = source.attributes(wanted)) return error;
        if (const auto error = attributes(present)) return error;
        // The owner first, since a change of it takes bits away; the bits last, since they may forbid the
        // rest.
        if (const auto error = changeOwner(wanted, present)) return error;
        if (const int number = zal::copyExtendedAttributes(source.descriptor(), descriptor_)) {
            return errorOf(number);
        }
        if (const auto error = attributes(present)) return error;
        const std::uint32_t mode = modeFor(wanted, present);
        if (mode == present.mode) return {};
        return done([&] { return ::fchmod(descriptor_, mode); });
    }

    std::error_code lock() override {
        const auto error = done([&] { return ::flock(descriptor_, LOCK_EX | LOCK_NB); });
        // A mounted volume without locks must not refuse every save; it then saves without this protection.
        const bool noLocks = error == std::errc::no_lock_available ||
                             error == std::errc::operation_not_supported ||
                             error == std::errc::function_not_supported;
        return noLocks ? std::error_code() : error;
    }
    std::error_code unlock() override {
        return done([&] { return ::flock(descriptor_, LOCK_UN); });
    }

    int descriptor() const override { return descriptor_; }

  private:
    // Both, else the group alone, else none: only the system's administrator may give files away, and on a
    // shared volume nobody may.
    std::error_code changeOwner(const ZALFileAttributes& wanted, const ZALFileAttributes& present) {
        const auto same = static_cast<uid_t>(-1);  // leaves an owner or a group as it is
        const uid_t group = wanted.group == present.group ? same : wanted.group;
        std::error_code error;
        for (const uid_t owner : {wanted.owner == present.owner ? same : wanted.owner, same}) {
            if (owner == same && group == same) return {};
            error = done([&] { return ::fchown(descriptor_, owner, group); });
            if (!isRefused(error)) return error;
        }
        return {};
    }

    static bool isRefused(const std::error_code& error) {
        return error == std::errc::operation_not_permitted || error == std::errc::invalid_argument ||
               error == std::errc::operation_not_supported;
    }

    // The permissions of one file for another, which may belong to somebody else.
    static std::uint32_t modeFor(const ZALFileAttributes& wanted, const ZALFileAttributes& present) {
        constexpr std::uint32_t asOwner = 06000, groupBits = 070;
        std::uint32_t mode = wanted.mode;
        if (wanted.owner != present.owner || wanted.group != present.group) mode &= ~asOwner;
        if (wanted.group != present.group) mode &= ~groupBits | (mode & 07) << 3;
        return mode;
    }

    std::error_code copyPlainly(ZALFileHandle& source, std::uint64_t from, std::uint64_t length,
                                std::uint64_t to) {
        if (length == 0) return {};
        ZALData buffer(static_cast<std::size_t>(std::min<std::uint64_t>(length, copyBufferSize)));
        while (length > 0) {
            const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(length, buffer.size()));
            std::size_t count = 0;
            if (const auto error = source.readAt(from, std::span(buffer).first(wanted), count)) return error;
            if (count < wanted) return errorOf(EIO);
            if (const auto error = writeAt(to, std::span(buffer).first(count))) return error;
            from += count;
            to += count;
            length -= count;
        }
        return {};
    }

    const int descriptor_;
};

std::unique_ptr<ZALFileHandle> handleOf(int descriptor, std::error_code& error) {
    error = descriptor < 0 ? errorOf(errno) : std::error_code();
    return descriptor < 0 ? nullptr : std::make_unique<MachineFileHandle>(descriptor);
}

// What the kernel calls an open file: two calls, where realpath() asks about every folder on the way. False
// where there is no /proc, and for names that it cuts off.
bool nameOfOpenFile(int descriptor, std::string& name) {
    std::array<char, PATH_MAX> buffer{};
    const std::string link = fmt::format("/proc/self/fd/{}", descriptor);
    const auto length = ::readlink(link.c_str(), buffer.data(), buffer.size());
    if (length <= 0 || static_cast<std::size_t>(length) == buffer.size() || buffer[0] != '/') return false;
    name.assign(buffer.data(), static_cast<std::size_t>(length));
    return true;
}

std::error_code realPath(const std::string& path, std::string& canonical) {
    const int descriptor = ::open(path.c_str(), O_PATH | O_CLOEXEC);
    if (descriptor < 0) return errorOf(errno);
    const bool isNamed = nameOfOpenFile(descriptor, canonical);
    ::close(descriptor);
    if (isNamed) return {};
    char* const resolved = ::realpath(path.c_str(), nullptr);
    if (resolved == nullptr) return errorOf(errno);
    canonical = resolved;
    std::free(resolved);
    return {};
}

// The names in a folder by their bytes, the last one first.
std::error_code namesIn(const std::string& folder, std::vector<std::string>& names) {
    DIR* const stream = ::opendir(folder.c_str());
    if (stream == nullptr) return errorOf(errno);
    errno = 0;
    while (const dirent* entry = ::readdir(stream)) {
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) {
            names.emplace_back(entry->d_name);
        }
        errno = 0;
    }
    const int number = errno;
    ::closedir(stream);
    std::ranges::sort(names, std::greater());
    return number == 0 ? std::error_code() : errorOf(number);
}

// A link to a folder is none here, so that no walk comes back to where it was.
bool isFolderItself(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

class MachineFileSystem final : public ZALFileSystem {
  public:
    ZALFileKind kindOfFile(const std::string& path) const override {
        struct stat status {};
        return ::stat(path.c_str(), &status) == 0 ? kindOf(status) : ZALFileKind::missing;
    }

    std::error_code attributes(const std::string& path, ZALFileAttributes& attributes) override {
        struct stat status {};
        if (::stat(path.c_str(), &status) != 0) return errorOf(errno);
        attributes = attributesOf(status);
        return {};
    }

    std::error_code canonicalPath(const std::string& path, std::string& canonical) override {
        const auto error = realPath(path, canonical);
        if (error != std::errc::no_such_file_or_directory) return error;
        struct stat status {};
        if (::lstat(path.c_str(), &status) == 0) return error;  // a link to nowhere
        const std::string name(zal::fileNameOf(path));
        if (name.empty()) return error;
        if (const auto folderError = realPath(zal::folderOf(path), canonical)) return folderError;
        canonical += canonical == "/" ? name : "/" + name;
        return {};
    }

    std::unique_ptr<ZALFileHandle> open(const std::string& path, bool forWriting,
                                        std::error_code& error) override {
        const int flags = (forWriting ? O_RDWR : O_RDONLY) | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
        return handleOf(uninterrupted([&] { return ::open(path.c_str(), flags); }), error);
    }

    std::unique_ptr<ZALFileHandle> create(const std::string& path, std::uint32_t mode,
                                          std::error_code& error) override {
        const int flags = O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW;
        return handleOf(uninterrupted([&] { return ::open(path.c_str(), flags, mode); }), error);
    }

    std::error_code rename(const std::string& from, const std::string& to) override {
        return done([&] { return ::rename(from.c_str(), to.c_str()); });
    }
    std::error_code unlink(const std::string& path) override {
        return done([&] { return ::unlink(path.c_str()); });
    }

    std::error_code enumerate(
        const std::string& folder,
        const std::function<ZALFolderWalk(const std::string& relativePath)>& visit) override {
        std::vector<std::string> waiting;  // what comes next is at the end
        if (const auto error = namesIn(folder, waiting)) return error;
        while (!waiting.empty()) {
            const std::string path = std::move(waiting.back());
            waiting.pop_back();
            const ZALFolderWalk walk = visit(path);
            if (walk == ZALFolderWalk::stop) break;
            const std::string whole = folder + "/" + path;
            if (walk == ZALFolderWalk::skip || !isFolderItself(whole)) continue;
            std::vector<std::string> names;
            namesIn(whole, names);
            for (const std::string& name : names) {
                waiting.push_back(path + "/" + name);
            }
        }
        return {};
    }

    std::error_code createFolders(const std::string& path, std::uint32_t mode) override {
        // Each folder by its prefix of the path, up to a slash or the end.
        for (std::size_t end = 0; end != std::string::npos;) {
            end = path.find('/', end + 1);
            const std::string folder = path.substr(0, end);
            if (::mkdir(folder.c_str(), mode) == 0) continue;
            const int number = errno;
            if (kindOfFile(folder) == ZALFileKind::folder) continue;
            return errorOf(number == EEXIST ? ENOTDIR : number);
        }
        return {};
    }

    std::error_code syncFolder(const std::string& path) override {
        std::error_code error;
        const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
        const auto folder = handleOf(uninterrupted([&] { return ::open(path.c_str(), flags); }), error);
        return folder ? folder->sync() : error;
    }
};

}  // namespace

std::shared_ptr<ZALFileSystem> ZALFileSystem::machine() {
    static const auto machine = std::make_shared<MachineFileSystem>();
    return machine;
}
