#include "PathMaps.h"

#include "Assignments.h"
#include "Collections.h"
#include "Output.h"

#include <zaltag/base/ZALText.h>
#include <zaltag/collection/ZALCollectionPath.h>

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace {

std::vector<PathMap> mapsInUse;

bool isOfWindows(const std::string& path) {
    return path.starts_with("//") || (path.size() > 1 && path[1] == ':');
}

// What stands behind a folder in a path, with its slash; null when the path is not below it. On Windows
// capital and small letters are one.
ZALNullableString below(const std::string& folder, std::string_view path) {
    const std::string_view bare = folder == "/" ? std::string_view() : std::string_view(folder);
    if (path.size() <= bare.size() || path[bare.size()] != '/') return std::nullopt;
    const std::string_view begin = path.substr(0, bare.size());
    const bool isBelow = begin == bare || (isOfWindows(folder) && ZALLoosePath(begin) == ZALLoosePath(bare));
    return isBelow ? ZALNullableString(path.substr(bare.size())) : std::nullopt;
}

std::string joined(const std::string& folder, const std::string& rest) {
    return (folder == "/" ? "" : folder) + rest;
}

void addOnce(std::vector<std::string>& paths, std::string path) {
    if (std::find(paths.begin(), paths.end(), path) == paths.end()) paths.push_back(std::move(path));
}

void addMappedThere(std::vector<std::string>& paths, const std::string& path) {
    const std::string common = ZALCommonPath(path);
    for (const PathMap& map : mapsInUse) {
        if (const auto rest = below(map.to, common)) addOnce(paths, joined(map.from, *rest));
    }
}

}  // namespace

PathMap pathMapOf(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0 || equals + 1 == text.size())
        throw UsageError(fmt::format("'{}' is not FROM=TO", printable(text)));
    const std::string from = ZALCommonPath(text.substr(0, equals));
    const std::string to = ZALCommonPath(text.substr(equals + 1));
    const bool isVolume = !from.starts_with('/') && !isOfWindows(from);
    // Between two collections a map may lead to a drive, too.
    return {isVolume ? "/Volumes/" + from : from, isOfWindows(to) ? to : ZALCommonPath(collectionPath(to))};
}

void usePathMaps(std::vector<PathMap> maps) {
    mapsInUse = std::move(maps);
}

std::vector<std::string> pathsThere(const std::string& path, bool isOfCollection) {
    std::vector<std::string> paths{path};
    if (mapsInUse.empty()) return paths;
    addMappedThere(paths, path);
    if (!isOfCollection) return paths;
    for (const std::string& here : pathsHere(path)) {
        addOnce(paths, here);
        addMappedThere(paths, here);
    }
    return paths;
}

std::vector<std::string> pathsHere(const std::string& path) {
    std::vector<std::string> paths;
    const std::string common = ZALCommonPath(path);
    if (common.starts_with('/')) paths.push_back(path);
    for (const PathMap& map : mapsInUse) {
        auto rest = below(map.from, common);
        if (!rest) rest = below(map.from, std::string_view(common).substr(ZALVolumeOfPath(common).size()));
        if (rest) addOnce(paths, joined(map.to, *rest));
    }
    return paths;
}
