#pragma once

#include <zaltag/platform/ZALFileSystem.h>

#include <memory>
#include <string>
#include <string_view>
#include <system_error>

/// A file that is written piece by piece under a name of its own and takes its place when it is whole; until
/// then what was there before stays.
class PageFile {
  public:
    explicit PageFile(const std::string& path);
    ~PageFile();
    PageFile(const PageFile&) = delete;
    PageFile& operator=(const PageFile&) = delete;

    /// Why the file cannot be written, as far as that is known; empty when all is well.
    std::string failure() const { return error_ ? error_.message() : std::string(); }
    /// Appends; after an error, does nothing.
    void write(std::string_view text);
    /// Puts the file into its place. The reason why it could not be written, or an empty text.
    std::string finish();

  private:
    void flush();

    const std::shared_ptr<ZALFileSystem> files_;
    std::string place_;      // without symbolic links
    std::string temporary_;  // empty when there is none
    std::unique_ptr<ZALFileHandle> file_;
    std::string pending_;
    std::uint64_t position_ = 0;
    std::error_code error_;
};
