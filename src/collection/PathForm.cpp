#include "base/Unicode.h"
#include "collection/NFD.h"

#include <zaltag/collection/ZALCollectionPath.h>

#include <algorithm>

namespace {

constexpr std::string_view volumesFolder = "/Volumes/";
constexpr std::string_view shareMark = "\\\\";

bool isSlash(char c) {
    return c == '/' || c == '\\';
}

bool startsWithDrive(std::string_view text) {
    return text.size() >= 2 && ((text[0] | 0x20) >= 'a' && (text[0] | 0x20) <= 'z') && text[1] == ':' &&
           (text.size() == 2 || isSlash(text[2]));
}

bool isOfWindows(std::string_view text) {
    return startsWithDrive(text) || text.starts_with(shareMark);
}

// What stands behind the marks that programs put in front of a drive or share; the text itself without one.
std::string_view fromWindows(std::string_view path) {
    for (const std::string_view mark : {volumesFolder, std::string_view("/")}) {
        if (path.starts_with(mark) && isOfWindows(path.substr(mark.size()))) return path.substr(mark.size());
    }
    return path;
}

std::string_view behindVolume(std::string_view path) {
    return path.substr(ZALVolumeOfPath(path).size());
}

}  // namespace

std::string ZALCommonPath(std::string_view path) {
    std::string common(fromWindows(path));
    if (isOfWindows(common)) {
        std::replace(common.begin(), common.end(), '\\', '/');
        if (startsWithDrive(common)) common[0] = static_cast<char>(common[0] & ~0x20);
    }
    while (common.size() > 1 && common.back() == '/') {
        common.pop_back();
    }
    return common;
}

std::string_view ZALVolumeOfPath(std::string_view path) {
    if (!path.starts_with(volumesFolder) || isOfWindows(path.substr(volumesFolder.size()))) return {};
    return path.substr(0, path.find('/', volumesFolder.size()));
}

std::string ZALDecomposedPath(std::string_view path) {
    return zal::canonicalDecomposition(path);
}

std::string ZALLoosePath(std::string_view path) {
    return zal::inOneCase(behindVolume(ZALCommonPath(path)));
}
