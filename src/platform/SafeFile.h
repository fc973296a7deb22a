#pragma once

#include "base/Failure.h"
#include "platform/BlockCache.h"
#include "platform/PieceList.h"

#include <zaltag/base/ZALData.h>
#include <zaltag/platform/ZALFileSystem.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <system_error>

namespace zal {

/// A file whose edits stay in memory until one commit() writes them, so that the old file or the new one
/// stands on the disk at any moment. Reads see the edited content. One thread at a time.
///
/// What a commit may replace is the very file that was opened: the path is resolved once, symbolic links
/// followed, and a file that another program changed, replaced or deleted since is left alone.
class SafeFile {
  public:
    /// The longest content that edits may make.
    static constexpr std::uint64_t lengthMax = std::uint64_t{1} << 62;

    /// Null when there is no regular file that can be read under the path; nothing is logged then. For
    /// editing, unless `readOnly` or the user may not write the file.
    static std::unique_ptr<SafeFile> open(const std::string& path, bool readOnly, Failure* failure = nullptr);

    /// As given to open().
    const std::string& path() const { return path_; }
    bool readOnly() const { return readOnly_; }
    /// The length of the edited content.
    std::uint64_t length() const { return pieces_.length(); }

    /// Fills the buffer from the edited content and returns the number of bytes: fewer than asked for at the
    /// end, or when the file cannot be read, or has become shorter, there. What was made of such a read is
    /// not to be trusted, so that no commit succeeds any more.
    std::size_t readAt(std::uint64_t position, std::span<std::uint8_t> buffer);

    /// Edits. A position behind the end fills what lies between with zeros. No-ops on a read-only file. An
    /// edit that cannot be kept (too far, no memory) makes every later commit fail, since the content lacks
    /// it.
    void write(std::uint64_t position, ZALDataView bytes);
    /// Puts bytes in the place of `replaced` bytes, or of as many as there are.
    void insert(std::uint64_t position, ZALDataView bytes, std::uint64_t replaced = 0);
    void remove(std::uint64_t position, std::uint64_t length);
    /// Cuts the content, or extends it with zeros.
    void truncate(std::uint64_t length);

    /// Forgets all edits since the last commit.
    void revert();

    /// Whether what stands under the path still is the file this object stands on, as it left it.
    bool isCurrent();

    /// Makes every later commit fail, with this reason: for who could not carry an edit through and cannot
    /// tell what the content is now. The first reason stays.
    void giveUp(std::string reason);

    /// False when every later commit fails.
    bool canCommit() const { return !readOnly_ && brokenBy_.empty(); }

    /// Writes the edited content. True when the file holds it: the object then stands on that file, and later
    /// edits and commits go on from there. Without a change nothing is written. False when the file could not
    /// be written: it is untouched then, no other file is left, the edits stay for a later commit, and who
    /// asks is told why; else one line is logged. A read-only file gives false.
    ///
    /// A file with several hard links is written as a new file: its other names keep the old content. Owner,
    /// group, permissions and extended attributes stay; where the user may not give them to the new file, the
    /// commit fails.
    bool commit(Failure* failure = nullptr);

  private:
    struct Range {
        std::uint64_t first;
        std::uint64_t last;
    };

    SafeFile(std::string path, std::string target, std::shared_ptr<ZALFileSystem> files,
             std::unique_ptr<ZALFileHandle> handle, const ZALFileAttributes& attributes, bool readOnly);

    std::error_code readContent(std::uint64_t position, std::span<std::uint8_t> buffer, std::size_t& count);
    std::error_code readOriginal(std::uint64_t position, std::span<std::uint8_t> buffer);
    void edit(std::uint64_t position, std::uint64_t removed, ZALDataView bytes);

    Failure writeChanges();
    Failure checkUnchanged();
    std::error_code findDifference(std::optional<Range>& difference);
    bool mayWriteInPlace(const Range& range) const;
    std::error_code readReplaced(const Range& range, std::vector<std::pair<std::size_t, ZALData>>& replaced);
    Failure writeInPlace(const Range& range);
    bool putBack(std::uint64_t position, ZALDataView original);
    Failure writeBeside();
    void noteState();

    const std::string path_;
    const std::string target_;  // canonical
    const std::shared_ptr<ZALFileSystem> files_;
    std::unique_ptr<ZALFileHandle> handle_;
    std::optional<ZALFileAttributes>
        state_;  // of the original; null when it could not be asked for after a write
    const bool readOnly_;
    PieceList pieces_;
    std::uint64_t originalLength_;
    BlockCache cache_;
    std::string brokenBy_;  // why no commit may succeed any more; empty while one may
};

}  // namespace zal
