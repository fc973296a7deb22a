#pragma once

#include "base/Failure.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include <tiostream.h>

namespace zal {

class SafeFile;

/// The stream every back-end hands TagLib. What TagLib writes stays in memory, and reads see it; the file
/// changes at commit() alone, from the old one to the complete new one. Positions and lengths behave as those
/// of TagLib's own file stream. One thread at a time; it must outlive the TagLib file made over it.
class TagLibStream final : public TagLib::IOStream {
  public:
    /// Null when there is no regular file that can be read under the path; nothing is logged then. A file
    /// that the user may not write opens read-only.
    static std::unique_ptr<TagLibStream> open(const std::string& path, bool readOnly,
                                              Failure* failure = nullptr);
    ~TagLibStream() override;

    /// Writes what TagLib saved. True when the file holds it; the stream and the TagLib file over it then
    /// stand on that file. False when it could not be written: the file is untouched, who asks is told why,
    /// else one line is logged, and a later commit goes on from the same edits. A read-only stream gives
    /// false. SafeFile says what stays and what a commit refuses.
    bool commit(Failure* failure = nullptr);
    /// Forgets what was written since the last commit.
    void revert();
    /// Whether the file under the path still is the one the stream stands on, changed by nobody else.
    bool isCurrent();
    /// False when every later commit fails: for what could not be read or kept.
    bool canCommit() const;
    /// Makes every later commit fail: for a save that TagLib broke off half-way, by an exception.
    void giveUp(const std::string& reason);

    /// Reads without TagLib's vectors and without moving the place: fills the buffer from a position on and
    /// returns the number of bytes, fewer at the end.
    std::size_t readAt(unsigned long position, std::span<std::uint8_t> buffer);

    TagLib::FileName name() const override;
    TagLib::ByteVector readBlock(unsigned long length) override;
    /// The bytes at a place, as many as there are; goes there.
    TagLib::ByteVector bytesAt(std::uint64_t position, std::uint64_t length);
    void writeBlock(const TagLib::ByteVector& data) override;
    void insert(const TagLib::ByteVector& data, unsigned long start = 0, unsigned long replace = 0) override;
    void removeBlock(unsigned long start = 0, unsigned long length = 0) override;
    bool readOnly() const override;
    bool isOpen() const override;
    void seek(long offset, Position from = Beginning) override;
    long tell() const override;
    long length() override;
    void truncate(long length) override;

  private:
    explicit TagLibStream(std::unique_ptr<SafeFile> file);

    const std::unique_ptr<SafeFile> file_;
    unsigned long position_ = 0;
};

}  // namespace zal
