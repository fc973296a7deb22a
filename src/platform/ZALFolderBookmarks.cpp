#include <zaltag/platform/ZALFolderBookmarks.h>

#include <zaltag/platform/ZALHost.h>

#include <filesystem>
#include <map>
#include <mutex>

ZALFolderBookmarks::~ZALFolderBookmarks() = default;

std::size_t ZALFolderBookmarks::accessCount(const std::string&) const {
    return 0;
}

namespace {

bool isFolder(const std::string& path) {
    return ZALHost::shared().fileSystem()->kindOfFile(path) == ZALFileKind::folder;
}

// Absolute and normalised, without a slash at the end, so that one folder has one name. Empty on failure.
std::string folderName(const std::string& path) {
    std::error_code error;
    std::string name = std::filesystem::absolute(path, error).lexically_normal().string();
    if (error) return {};
    if (name.size() > 1 && name.ends_with('/')) name.pop_back();
    return name;
}

class PathBookmarks final : public ZALFolderBookmarks {
  public:
    ZALNullableData bookmarkForFolder(const std::string& path, unsigned) override {
        const std::string name = folderName(path);
        if (!isFolder(name)) return std::nullopt;
        return ZALData(name.begin(), name.end());
    }

    ZALNullableString resolveBookmark(ZALDataView bookmark, unsigned) override {
        const std::string path(bookmark.begin(), bookmark.end());
        const bool isPath = path.starts_with('/') && path.find('\0') == std::string::npos;
        return isPath && isFolder(path) ? ZALNullableString(path) : std::nullopt;
    }

    bool startAccess(const std::string& path) override {
        const std::string name = folderName(path);
        if (!isFolder(name)) return false;
        const std::lock_guard lock(mutex_);
        ++counts_[name];
        return true;
    }

    void stopAccess(const std::string& path) override {
        const std::lock_guard lock(mutex_);
        const auto count = counts_.find(folderName(path));
        if (count != counts_.end() && --count->second == 0) counts_.erase(count);
    }

    std::size_t accessCount(const std::string& path) const override {
        const std::lock_guard lock(mutex_);
        const auto count = counts_.find(folderName(path));
        return count == counts_.end() ? 0 : count->second;
    }

  private:
    mutable std::mutex mutex_;
    std::map<std::string, std::size_t> counts_;
};

}  // namespace

std::shared_ptr<ZALFolderBookmarks> ZALFolderBookmarks::machine() {
    static const auto* const bookmarks =
        new std::shared_ptr<ZALFolderBookmarks>(std::make_shared<PathBookmarks>());
    return *bookmarks;
}
