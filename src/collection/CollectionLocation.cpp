#include "collection/CollectionProgram.h"
#include "platform/Log.h"

#include <zaltag/platform/ZALFolderBookmarks.h>
#include <zaltag/platform/ZALHost.h>
#include <zaltag/platform/ZALUserDefaults.h>

namespace zal {

namespace {

// What the platform calls a bookmark that opens the folder again in a later run.
constexpr unsigned creationWithSecurityScope = 2048;
constexpr unsigned resolutionWithSecurityScope = 1024;

}  // namespace

bool isSandboxed() {
    return ZALHost::shared().environmentVariable("APP_SANDBOX_CONTAINER_ID").has_value();
}

ZALNullableString existingFile(const std::string& path) {
    const ZALFileKind kind = ZALHost::shared().fileSystem()->kindOfFile(path);
    return kind == ZALFileKind::missing ? ZALNullableString() : path;
}

std::string joinPaths(std::string_view folder, std::string_view name) {
    while (folder.size() > 1 && folder.ends_with('/')) {
        folder.remove_suffix(1);
    }
    while (name.starts_with('/')) {
        name.remove_prefix(1);
    }
    std::string joined(folder);
    if (!joined.empty() && !name.empty() && joined != "/") joined += '/';
    return joined.append(name);
}

ZALNullableString userCollectionFileURL(const CollectionProgram& program) {
    return ZALHost::shared().userDefaults()->stringForKey(program.userLocationKey);
}

void setUserCollectionFileURL(const CollectionProgram& program, const std::string& url) {
    ZALHost::shared().userDefaults()->setString(program.userLocationKey, url);
}

ZALNullableString collectionURL(const CollectionProgram& program) {
    const ZALNullableString chosen = userCollectionFileURL(program);
    return chosen ? chosen : program.defaultFile();
}

ZALNullableString collectionBookmarkURL(const CollectionProgram& program) {
    const auto bookmark = ZALHost::shared().userDefaults()->dataForKey(program.bookmarkKey);
    if (!bookmark) return std::nullopt;
    return ZALHost::shared().folderBookmarks()->resolveBookmark(*bookmark, resolutionWithSecurityScope);
}

ZALNullableString collectionFileURL(const CollectionProgram& program) {
    if (!isSandboxed()) return collectionURL(program);
    const ZALNullableString folder = collectionBookmarkURL(program);
    if (!folder) return std::nullopt;
    const auto bookmarks = ZALHost::shared().folderBookmarks();
    const bool isOpen = bookmarks->startAccess(*folder);
    if (!isOpen) logf("Error accessing security scoped URL for {} collection.", program.name);
    const ZALNullableString file = program.fileInFolder(*folder);
    // With a file the access stays open: it is going to be read.
    if (!file && isOpen) bookmarks->stopAccess(*folder);
    return file;
}

bool collectionFileExists(const CollectionProgram& program) {
    const ZALNullableString folder = collectionBookmarkURL(program);
    return folder && program.fileInFolder(*folder);
}

bool hasPermissionForCollectionFolder(const CollectionProgram& program) {
    return ZALHost::shared().userDefaults()->hasValueForKey(program.bookmarkKey);
}

void setCollectionPermissionsFolder(const CollectionProgram& program, const ZALNullableString& folder) {
    const auto defaults = ZALHost::shared().userDefaults();
    if (folder) {
        const auto bookmarks = ZALHost::shared().folderBookmarks();
        defaults->setData(program.bookmarkKey,
                          bookmarks->bookmarkForFolder(*folder, creationWithSecurityScope));
    } else {
        defaults->removeKey(program.bookmarkKey);
    }
    defaults->synchronize();
}

}  // namespace zal
