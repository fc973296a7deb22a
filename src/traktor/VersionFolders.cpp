#include "base/Paths.h"
#include "base/Unicode.h"
#include "traktor/TraktorProgram.h"

#include <zaltag/base/zal_versionStringCompare.h>
#include <zaltag/platform/ZALHost.h>
#include <zaltag/traktor/ZALTraktorDatabase.h>

#include <algorithm>

namespace zal {

namespace {

constexpr const char* fileName = "collection.nml";
constexpr std::string_view programName = "Traktor";

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// One character of UTF-8 counts once.
bool isOtherCharacter(char c) {
    return !isDigit(c) && (static_cast<unsigned char>(c) & 0xC0) != 0x80;
}

ZALNullableString fileOfOldestVersion(const std::string& folder) {
    std::string oldest;
    const auto visit = [&oldest](const std::string& path) {
        const std::string_view version = versionOfFolder(path);
        if (!version.empty()) {
            const bool isFirst = oldest.empty();
            // 1 says that the best so far is the newer one.
            if (isFirst || zal_versionStringCompare(version, versionOfFolder(oldest)) == 1) oldest = path;
        }
        // What lies below can only be a version folder when this could go on as the name of one.
        return versionOfFolder(path + "/").empty() ? ZALFolderWalk::skip : ZALFolderWalk::next;
    };
    ZALHost::shared().fileSystem()->enumerate(folder, visit);
    return oldest.empty() ? ZALNullableString()
                          : existingFile(joinPaths(joinPaths(folder, oldest), fileName));
}

}  // namespace

bool isTraktor(std::string_view name) {
    if (asciiLowercase(name.substr(0, programName.size())) != asciiLowercase(programName)) return false;
    return name.size() == programName.size() || name[programName.size()] == ' ' ||
           name[programName.size()] == '.';
}

std::string_view versionOfFolder(std::string_view name) {
    constexpr std::string_view beginning = "Traktor ";
    if (!name.starts_with(beginning)) return {};
    const std::string_view version = name.substr(beginning.size());
    if (version.empty() || !isDigit(version[0])) return {};
    return std::count_if(version.begin(), version.end(), isOtherCharacter) <= 2 ? version
                                                                                : std::string_view();
}

}  // namespace zal

ZALNullableString ZALTraktorDatabase::pathToMostLikelyActiveTraktorCollectionFile() {
    const std::vector<std::string> folders = ZALHost::shared().documentsFolders();
    if (folders.empty()) return std::nullopt;
    return zal::fileOfOldestVersion(zal::joinPaths(folders.front(), "Native Instruments"));
}

ZALNullableString ZALTraktorDatabase::traktorDBPathInPermittedFolder(const std::string& folder) {
    const bool isVersion = !zal::versionOfFolder(zal::lastPathComponent(folder)).empty();
    return isVersion ? zal::existingFile(zal::joinPaths(folder, zal::fileName))
                     : zal::fileOfOldestVersion(folder);
}
