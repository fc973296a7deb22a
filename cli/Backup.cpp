#include "Backup.h"

#include "Output.h"

#include <zaltag/platform/ZALClock.h>
#include <zaltag/platform/ZALHost.h>

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr const char* mark = ".before-zaltag-";
constexpr const char* unfinished = ".zaltag-unfinished";
constexpr std::size_t keptAtTheEnd = 5;

std::string unfinishedOf(const std::string& path) {
    const fs::path whole = path;
    return (whole.parent_path() / ("." + whole.filename().string() + unfinished)).string();
}

// Makes the file that is written first, and locks it, so that nobody else takes it for what a kill left.
std::unique_ptr<ZALFileHandle> createUnfinished(ZALFileSystem& files, const std::string& path,
                                                std::uint32_t mode, std::error_code& error) {
    auto left = files.open(path, true, error);
    if (left && (error = left->lock())) return nullptr;
    if (left) files.unlink(path);
    auto file = files.create(path, mode, error);
    if (file && (error = file->lock())) return nullptr;
    return file;
}

// The copies of a collection, the oldest first.
std::vector<std::string> copiesOf(const std::string& collection) {
    std::vector<std::string> copies;
    const fs::path path = collection;
    const std::string begin = path.filename().string() + mark;
    ZALHost::shared().fileSystem()->enumerate(path.parent_path().string(), [&](const std::string& name) {
        if (name.starts_with(begin)) copies.push_back((path.parent_path() / name).string());
        return ZALFolderWalk::skip;
    });
    std::sort(copies.begin(), copies.end());
    return copies;
}

std::error_code copyInto(ZALFileHandle& target, ZALFileHandle& source) {
    ZALFileAttributes attributes;
    std::error_code error = source.attributes(attributes);
    if (!error && attributes.size > 0) error = target.copyFrom(source, 0, attributes.size, 0);
    // A copy is the user's own where the owner cannot be kept.
    if (!error) target.copyAttributesFrom(source);
    return error;
}

bool isThere(const std::string& path) {
    return ZALHost::shared().fileSystem()->kindOfFile(path) != ZALFileKind::missing;
}

}  // namespace

std::string timeStamp() {
    const auto now = std::chrono::system_clock::to_time_t(ZALHost::shared().clock()->now());
    return fmt::format("{:%Y%m%d-%H%M%S}", fmt::localtime(now));
}

std::string reasonOf(const std::string& path, const std::error_code& error) {
    return fmt::format("{}: {}", printable(path), error.message());
}

std::string writeWhole(const std::string& path, std::uint32_t mode,
                       const std::function<std::error_code(ZALFileHandle& file)>& write) {
    const auto files = ZALHost::shared().fileSystem();
    const std::string beside = unfinishedOf(path);
    std::error_code error;
    const auto file = createUnfinished(*files, beside, mode, error);
    if (!file) return reasonOf(path, error);
    error = write(*file);
    if (!error) error = file->sync();
    if (!error) error = files->rename(beside, path);
    if (error) {
        files->unlink(beside);
        return reasonOf(path, error);
    }
    files->syncFolder(fs::path(path).parent_path().string());
    return {};
}

std::string copyFile(const std::string& from, const std::string& to) {
    std::error_code error;
    const auto source = ZALHost::shared().fileSystem()->open(from, false, error);
    if (!source) return reasonOf(from, error);
    return writeWhole(to, 0600, [&](ZALFileHandle& target) { return copyInto(target, *source); });
}

std::string backUp(const std::string& collection, std::string& copy) {
    const std::string name = collection + mark + timeStamp();
    copy = name;
    for (int again = 2; isThere(copy); ++again) {
        copy = fmt::format("{}-{}", name, again);
    }
    return copyFile(collection, copy);
}

void removeOldCopies(const std::string& collection) {
    const std::vector<std::string> copies = copiesOf(collection);
    for (std::size_t i = 1; i + keptAtTheEnd < copies.size(); ++i) {
        ZALHost::shared().fileSystem()->unlink(copies[i]);
    }
}

std::string digestOf(const std::string& path) {
    constexpr std::size_t blockSize = std::size_t{1} << 20;
    std::error_code error;
    const auto file = ZALHost::shared().fileSystem()->open(path, false, error);
    if (!file) return {};
    std::uint64_t hash = 0xCBF29CE484222325;  // FNV-1a, of words
    std::uint64_t size = 0;
    std::vector<std::uint8_t> block(blockSize);
    for (std::size_t count = blockSize; count == blockSize; size += count) {
        std::fill(block.begin(), block.end(), std::uint8_t{0});
        if (file->readAt(size, block, count)) return {};
        for (std::size_t at = 0; at < count; at += sizeof(std::uint64_t)) {
            std::uint64_t word = 0;
            std::copy_n(&block[at], sizeof word, reinterpret_cast<std::uint8_t*>(&word));
            hash = (hash ^ word) * 0x100000001B3;
            hash ^= hash >> 32;
        }
    }
    return fmt::format("{:016x}-{}", hash, size);
}
