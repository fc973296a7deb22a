#pragma once

#include <string>
#include <vector>

/// A folder, volume or drive of collections that stands for a folder here, both without a slash at their end.
struct PathMap {
    std::string from;  ///< a drive of Windows as "C:/..."
    std::string to;
};

/// The map that a text FROM=TO means; throws UsageError when it is none.
PathMap pathMapOf(const std::string& text);

/// The maps in use.
void usePathMaps(std::vector<PathMap> maps);

/// The paths that collections may have for a file of this path, by the maps, and the path itself first.
std::vector<std::string> pathsThere(const std::string& path);
/// Where the file of a collection's path may be here: there itself, and by the maps.
std::vector<std::string> pathsHere(const std::string& path);
