// sandbox FOLDER: a host that may open only what its user opened to it reads the Rekordbox collection of a
// folder.
#include <zaltag/zaltag.h>

#include <cstdlib>
#include <iostream>
#include <set>

namespace {

// The rights that a sandbox gives: for folders the user chose, from startAccess() to stopAccess().
class Rights final : public ZALFolderBookmarks {
  public:
    // The sandbox's own token; here the path itself. Options are the platform's.
    ZALNullableData bookmarkForFolder(const std::string& path, unsigned) override {
        return ZALData(path.begin(), path.end());
    }
    ZALNullableString resolveBookmark(ZALDataView bookmark, unsigned) override {
        return std::string(bookmark.begin(), bookmark.end());
    }
    bool startAccess(const std::string& path) override {
        open_.insert(path);
        std::cout << "open " << open_.size() << "\n";
        return true;
    }
    void stopAccess(const std::string& path) override {
        open_.erase(open_.find(path));
        std::cout << "close " << open_.size() << "\n";
    }

  private:
    std::multiset<std::string> open_;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: sandbox FOLDER\n";
        return 2;
    }
    ZALHost& host = ZALHost::shared();
    host.setFolderBookmarks(std::make_shared<Rights>());
    host.setEnvironment([](const std::string& name) -> ZALNullableString {
        if (name == "APP_SANDBOX_CONTAINER_ID") return "org.example.player";  // the sandbox sets it by itself
        const char* value = std::getenv(name.c_str());
        return value != nullptr ? ZALNullableString(value) : std::nullopt;
    });

    // After the user has chosen the folder in a dialog; a later run finds it again in the settings.
    if (!ZALRekordboxDatabase::hasPermissionForRekordboxFolder())
        ZALRekordboxDatabase::setRekordboxDatabasePermissionsFolder(argv[1]);
    const auto database = ZALRekordboxDatabase::sharedDatabase();
    std::cout << database->openedURL().value_or("(none)") << ": " << database->trackCount() << " tracks\n";
    return database->isRekordboxDBLoaded() ? 0 : 1;
}
