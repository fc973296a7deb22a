#include "platform/FileReplacement.h"

#include "base/Paths.h"
#include "platform/Log.h"

#include <zaltag/platform/ZALHost.h>

#include <atomic>
#include <exception>
#include <utility>

namespace zal {

namespace {

// Bytes gathered for one write; a run of the original that is shorter than a quarter is read into them.
constexpr std::size_t bufferSize = 262144;
constexpr std::uint64_t shortRun = bufferSize / 4;

constexpr std::uint32_t newFileMode = 0644;

// FNV-1a: the same in every process and every version.
std::uint64_t hashOf(std::string_view text) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char c : text) {
        hash = (hash ^ static_cast<std::uint8_t>(c)) * 0x100000001B3;
    }
    return hash;
}

bool isSameFile(const ZALFileAttributes& one, const ZALFileAttributes& other) {
    return one.device == other.device && one.inode == other.inode;
}

}  // namespace

bool isFileAt(ZALFileSystem& files, const std::string& path, ZALFileHandle& handle) {
    ZALFileAttributes named;
    ZALFileAttributes held;
    return !files.attributes(path, named) && !handle.attributes(held) && isSameFile(named, held);
}

std::string describe(const std::error_code& error) {
    if (error == std::errc::operation_would_block) return "it is locked: another save is running";
    return error.message();
}

void syncFolderOf(ZALFileSystem& files, const std::string& path) {
    if (const auto error = files.syncFolder(folderOf(path))) {
        logf("saved '{}', but could not sync its folder: {}", path, describe(error));
    }
}

FileReplacement::FileReplacement(std::shared_ptr<ZALFileSystem> files, std::string target)
    : files_(std::move(files)), target_(std::move(target)), path_(temporaryPath(target_)) {}

FileReplacement::~FileReplacement() {
    // The name may be another process's by now.
    if (exists_ && nameIsOurs()) files_->unlink(path_);
}

std::string FileReplacement::temporaryPath(const std::string& target) {
    const std::string_view name = fileNameOf(target);
    // The hash keeps the name short where the target's own is as long as names can be.
    return fmt::format("{}.zaltag-{:016x}.tmp", target.substr(0, target.size() - name.size()), hashOf(name));
}

void FileReplacement::clearLeftOver(ZALFileSystem& files, const std::string& target) {
    const std::string path = temporaryPath(target);
    std::error_code error;
    auto handle = files.open(path, true, error);
    if (!handle && error != std::errc::no_such_file_or_directory) handle = files.open(path, false, error);
    if (!handle || handle->lock()) return;
    // Between opening and locking the file may have taken the target's name.
    if (isFileAt(files, path, *handle)) files.unlink(path);
}

bool FileReplacement::begin(ZALFileHandle* attributesFrom, std::uint32_t mode) {
    clearLeftOver(*files_, target_);
    std::error_code error;
    handle_ = files_->create(path_, mode, error);
    if (error == std::errc::file_exists) {
        reason_ = fmt::format("another save of it is running, as {} shows", path_);
        return false;
    }
    if (!handle_) return fail("creating", error);
    exists_ = true;
    if (const auto lockError = handle_->lock()) {
        // Who was quicker takes it for left over and clears it.
        exists_ = lockError != std::errc::operation_would_block;
        return fail("locking", lockError);
    }
    if (!nameIsOurs()) {
        reason_ = fmt::format("{} was taken away", path_);
        return false;
    }
    if (attributesFrom == nullptr) return true;
    if (const auto attributesError = handle_->copyAttributesFrom(*attributesFrom)) {
        return fail("keeping owner, permissions and attributes in", attributesError);
    }
    sayWhetherOwnerIsKept(*attributesFrom);
    return true;
}

// Once in a process: in a shared folder it is so with every file.
void FileReplacement::sayWhetherOwnerIsKept(ZALFileHandle& original) {
    static std::atomic<bool> isSaid = false;
    ZALFileAttributes before;
    ZALFileAttributes after;
    if (isSaid || original.attributes(before) || handle_->attributes(after)) return;
    if ((before.owner == after.owner && before.group == after.group) || isSaid.exchange(true)) return;
    logf("'{}' now belongs to who saved it, as other files may: owner and group cannot be kept here",
         target_);
}

bool FileReplacement::append(ZALDataView bytes) {
    endsInHole_ = endsInHole_ && bytes.empty();
    if (buffer_.size() + bytes.size() > bufferSize && !flush()) return false;
    if (bytes.size() <= bufferSize) {
        buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
        return true;
    }
    if (const auto error = handle_->writeAt(written_, bytes)) return fail("writing", error);
    written_ += bytes.size();
    return true;
}

bool FileReplacement::appendCopy(ZALFileHandle& source, std::uint64_t position, std::uint64_t length) {
    if (length < shortRun) {
        ZALData run(static_cast<std::size_t>(length));
        std::size_t count = 0;
        auto error = source.readAt(position, run, count);
        if (!error && count < run.size()) error = std::make_error_code(std::errc::io_error);
        return error ? fail("copying to", error) : append(run);
    }
    if (!flush()) return false;
    endsInHole_ = false;
    if (const auto error = handle_->copyFrom(source, position, length, written_)) {
        return fail("copying to", error);
    }
    written_ += length;
    return true;
}

bool FileReplacement::appendZeros(std::uint64_t length) {
    if (length == 0) return true;
    if (length < shortRun) return append(ZALData(static_cast<std::size_t>(length)));
    if (!flush()) return false;
    written_ += length;
    endsInHole_ = true;
    return true;
}

bool FileReplacement::flush() {
    if (buffer_.empty()) return true;
    if (const auto error = handle_->writeAt(written_, buffer_)) return fail("writing", error);
    written_ += buffer_.size();
    buffer_.clear();
    return true;
}

bool FileReplacement::finish(const std::function<std::string()>& mayReplace) {
    if (!flush()) return false;
    if (endsInHole_) {
        if (const auto error = handle_->truncate(written_)) return fail("extending", error);
    }
    if (const auto error = handle_->sync()) return fail("syncing", error);
    if (const auto error = handle_->attributes(attributes_)) return fail("looking at", error);
    if (!nameIsOurs()) {
        reason_ = fmt::format("{} was taken away", path_);
        return false;
    }
    reason_ = mayReplace();
    if (!reason_.empty()) return false;
    if (const auto error = files_->rename(path_, target_)) return fail("renaming", error);
    exists_ = false;
    return true;
}

void FileReplacement::syncFolder() {
    syncFolderOf(*files_, target_);
}

bool FileReplacement::fail(std::string_view step, const std::error_code& error) {
    reason_ = fmt::format("{} {}: {}", step, path_, describe(error));
    return false;
}

bool FileReplacement::nameIsOurs() {
    return handle_ && isFileAt(*files_, path_, *handle_);
}

namespace {

std::string replace(const std::string& path, const FileWriter& write,
                    const std::function<std::string()>& mayReplace, const NewFileKeeper& keep) {
    const auto files = ZALHost::shared().fileSystem();
    std::string target;
    if (const auto error = files->canonicalPath(path, target)) return describe(error);
    const ZALFileKind kind = files->kindOfFile(target);
    if (kind != ZALFileKind::regular && kind != ZALFileKind::missing) return "it is not a regular file";
    std::error_code error;
    const auto old = kind == ZALFileKind::regular ? files->open(target, true, error) : nullptr;
    if (error) return describe(error);

    FileReplacement replacement(files, target);
    if (!replacement.begin(old.get(), old ? 0600 : newFileMode)) return replacement.reason();
    if (!write(replacement)) {
        return replacement.reason().empty() ? "its new content could not be made" : replacement.reason();
    }
    if (!replacement.finish([&] { return mayReplace ? mayReplace() : std::string(); }))
        return replacement.reason();
    replacement.syncFolder();
    if (keep) {
        auto handle = replacement.takeHandle();
        handle->unlock();
        keep(std::move(handle), replacement.attributes());
    }
    return {};
}

}  // namespace

std::string whyNotReplacedBy(const std::string& path, const FileWriter& write,
                             const std::function<std::string()>& mayReplace, const NewFileKeeper& keep) {
    try {
        return replace(path, write, mayReplace, keep);
    } catch (const std::exception& exception) {  // memory ran out, or the writer gave up this way
        return exception.what();
    }
}

std::string whyNotReplaced(const std::string& path, const std::function<bool(const ChunkSink& sink)>& write,
                           const std::function<std::string()>& mayReplace, ZALFileAttributes* written) {
    const auto writeChunks = [&write](FileReplacement& replacement) {
        bool sinkFailed = false;
        const bool isWritten = write([&](ZALDataView bytes) {
            sinkFailed = sinkFailed || !replacement.append(bytes);
            return !sinkFailed;
        });
        return isWritten && !sinkFailed;
    };
    return whyNotReplacedBy(path, writeChunks, mayReplace,
                            [written](std::unique_ptr<ZALFileHandle>, const ZALFileAttributes& attributes) {
                                if (written != nullptr) *written = attributes;
                            });
}

bool replaceFileContents(const std::string& path, const std::function<bool(const ChunkSink& sink)>& write) {
    const std::string reason = whyNotReplaced(path, write);
    if (!reason.empty()) logf("could not write '{}': {}", path, reason);
    return reason.empty();
}

bool replaceFileContents(const std::string& path, ZALDataView contents) {
    return replaceFileContents(path, [contents](const ChunkSink& sink) { return sink(contents); });
}

}  // namespace zal
