#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/platform/ZALFileSystem.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

namespace zal {

/// A new file that is written beside its target and takes the target's name when it is whole.
///
/// The file under way has a hidden name in the target's folder that depends on the target's name alone, and
/// its maker holds the lock (flock) on it. Who finds the name taken and the file unlocked has found what a
/// killed process left, and clears it; found locked, another process is writing this target and the
/// replacement fails. Only the holder of the lock renames or removes the file, after looking that the name
/// still is the file it holds; so two processes never mix, and none removes the other's file.
class FileReplacement {
  public:
    /// The target is a canonical path.
    FileReplacement(std::shared_ptr<ZALFileSystem> files, std::string target);
    /// Removes the file unless it has taken the target's name.
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// Makes the file: with the attributes of another one, or with `mode` when that is null. Every step that
    /// gives false has set reason(), and the replacement is to be given up.
    bool begin(ZALFileHandle* attributesFrom, std::uint32_t mode = 0600);
    bool append(ZALDataView bytes);
    bool appendCopy(ZALFileHandle& source, std::uint64_t position, std::uint64_t length);
    bool appendZeros(std::uint64_t length);
    /// Brings the file to the disk and gives it the target's name. `mayReplace` is asked last, and gives the
    /// reason why the target must be left alone, or an empty text.
    bool finish(const std::function<std::string()>& mayReplace);
    /// After finish(): returns when the name is on the disk, too. A failure is logged only, since the target
    /// is the new file by now and whole.
    void syncFolder();

    /// Why a step failed.
    const std::string& reason() const { return reason_; }
    /// After finish(): the attributes of the new file, and its handle, open for writing and locked.
    const ZALFileAttributes& attributes() const { return attributes_; }
    std::unique_ptr<ZALFileHandle> takeHandle() { return std::move(handle_); }

    /// The name the file has while it is written.
    static std::string temporaryPath(const std::string& target);
    /// Clears what a killed process left of a replacement of this target, if it left anything.
    static void clearLeftOver(ZALFileSystem& files, const std::string& target);

  private:
    bool fail(std::string_view step, const std::error_code& error);
    bool flush();
    bool nameIsOurs();
    void sayWhetherOwnerIsKept(ZALFileHandle& original);

    const std::shared_ptr<ZALFileSystem> files_;
    const std::string target_;
    const std::string path_;
    std::unique_ptr<ZALFileHandle> handle_;
    bool exists_ = false;
    std::uint64_t written_ = 0;  // how far the file has been written or skipped
    bool endsInHole_ = false;
    ZALData buffer_;  // what follows the written part
    ZALFileAttributes attributes_;
    std::string reason_;
};

/// Whether a path still is the open file.
bool isFileAt(ZALFileSystem& files, const std::string& path, ZALFileHandle& handle);

/// Returns when the name of a file that was just renamed is on the disk. A failure is logged only, since the
/// file is there and whole. The path is absolute, or relative to the working folder.
void syncFolderOf(ZALFileSystem& files, const std::string& path);

/// The text for an error: the system's words, or what a lock that is held means here.
std::string describe(const std::error_code& error);

/// Takes bytes one after the other. False when they could not be written: the writer should stop.
using ChunkSink = std::function<bool(ZALDataView)>;

/// Writes a file whole: beside the old one, synced, then renamed over it, so that the old content or the new
/// one stands under the path at any moment. `write` hands over the content and returns false to give up. A
/// file that exists must be writable and keeps its owner, permissions and extended attributes; its other hard
/// links keep the old content; symbolic links are followed. A new file gets the mode 0644 less the process's
/// mask. False when the file was not written: it is untouched then and one line was logged.
bool replaceFileContents(const std::string& path, const std::function<bool(const ChunkSink& sink)>& write);
bool replaceFileContents(const std::string& path, ZALDataView contents);
/// The same, without the log line: gives the reason why the file was not written, or an empty text.
/// `mayReplace`, when given, is asked last and gives the reason why the file must be left alone, or an empty
/// text. `written`, when given, becomes the attributes of the new file.
std::string whyNotReplaced(const std::string& path, const std::function<bool(const ChunkSink& sink)>& write,
                           const std::function<std::string()>& mayReplace = {},
                           ZALFileAttributes* written = nullptr);

/// The same for who copies ranges of other files: `write` appends to the replacement itself, and gives false
/// when that did, or throws. `keep`, when given, is handed the new file, no longer locked, and its
/// attributes.
using FileWriter = std::function<bool(FileReplacement& replacement)>;
using NewFileKeeper =
    std::function<void(std::unique_ptr<ZALFileHandle> file, const ZALFileAttributes& attributes)>;
std::string whyNotReplacedBy(const std::string& path, const FileWriter& write,
                             const std::function<std::string()>& mayReplace, const NewFileKeeper& keep);

}  // namespace zal
