#pragma once

#include <zaltag/tag/ZALTag.h>

#include <memory>
#include <string>
#include <vector>

/// The path as the commands hand it to the library: absolute, without "." and "..".
std::string absolutePath(const std::string& path);

/// A file opened for a command, or the reason why not, in a few words for a person.
struct OpenedFile {
    std::shared_ptr<ZALTag> tag;
    std::string failure;
};

OpenedFile openFile(const std::string& path, bool readOnly);

/// The files a command walks over, and the folders that could not be read.
struct FoundFiles {
    std::vector<std::string> paths;
    std::vector<std::pair<std::string, std::string>> failures;  ///< path and reason
};

/// Every supported file below the paths, in the order of the names. A file that is named itself is taken
/// whatever its type, so that the command can say what is wrong with it. Links to folders below a path are
/// not followed.
FoundFiles findFiles(const std::vector<std::string>& paths);
