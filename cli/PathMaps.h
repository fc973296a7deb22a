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

/// The paths that a collection may have for a file here, or for one that another collection has, by the maps;
/// the path itself first.
std::vector<std::string> pathsThere(const std::string& path, bool isOfCollection);
/// Where the file of a collection's path may be here: there itself, and by the maps.
std::vector<std::string> pathsHere(const std::string& path);
