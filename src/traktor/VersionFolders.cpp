#include "base/Paths.h"
#include "base/Unicode.h"
#include "traktor/TraktorProgram.h"

#include <zaltag/base/zal_versionStringCompare.h>
#include <zaltag/platform/ZALHost.h>
#include <zaltag/traktor/ZALTraktorDatabase.h>

#include <algorithm>
#include <cstring>

namespace zal {

namespace {

constexpr const char* fileName = "collection.nml";

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

bool isTraktor(std::string_view program) {
    std::string name = asciiLowercase(program);
    if (name.ends_with(".exe")) name.resize(name.size() - 4);
    for (const char* product : {"traktor pro", "traktor"}) {
        if (!std::string_view(name).starts_with(product)) continue;
        const std::string_view rest = std::string_view(name).substr(std::strlen(product));
        // A version number: digits and points behind a blank.
        const bool isVersion = rest.size() > 1 && rest[0] == ' ' && isDigit(rest[1]) &&
                               rest.find_first_not_of("0123456789.", 1) == rest.npos;
        if (rest.empty() || isVersion) return true;
    }
    return false;
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
