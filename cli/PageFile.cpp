#include "PageFile.h"

#include <zaltag/platform/ZALHost.h>

#include <fmt/format.h>
#include <unistd.h>

PageFile::PageFile(const std::string& path) : files_(ZALHost::shared().fileSystem()) {
    error_ = files_->canonicalPath(path, place_);
    if (error_) return;
    const std::string temporary = fmt::format("{}.{}.tmp", place_, ::getpid());
    file_ = files_->create(temporary, 0666, error_);
    if (file_) temporary_ = temporary;
}

PageFile::~PageFile() {
    file_.reset();
    if (!temporary_.empty()) files_->unlink(temporary_);
}

void PageFile::write(std::string_view text) {
    constexpr std::size_t atOnce = std::size_t{1} << 20;
    pending_ += text;
    if (pending_.size() >= atOnce) flush();
}

void PageFile::flush() {
    const ZALData bytes(pending_.begin(), pending_.end());
    if (!error_) error_ = file_->writeAt(position_, bytes);
    position_ += bytes.size();
    pending_.clear();
}

std::string PageFile::finish() {
    flush();
    if (!error_) error_ = file_->sync();
    file_.reset();
    if (!error_) error_ = files_->rename(temporary_, place_);
    if (error_) return error_.message();
    temporary_.clear();
    return {};
}
