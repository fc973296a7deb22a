#pragma once

#include <zaltag/tag/ZALTag.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// The path as the commands hand it to the library: absolute. ".." stays, since across a link it leads
/// elsewhere than its text says.
std::string absolutePath(const std::string& path);

/// A file opened for a command, or the reason why not, in a few words for a person.
struct OpenedFile {
    std::shared_ptr<ZALTag> tag;
    std::string failure;
};

OpenedFile openFile(const std::string& path, bool readOnly);

/// Why a file that is open for reading only is not changed.
inline constexpr char readOnlyReason[] = "is read-only; make it writable first (chmod u+w)";

/// Thrown by a change to say why a file is left alone.
class ChangeRefused : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Saves a file. Empty when that went well, else the reason for a person.
std::string saveFile(ZALTag& tag);

/// Opens a file, changes it and saves it. Empty when that went well, else the reason for a person; the file
/// is then as it was, unless `missing` told what of the change the saved file does not hold.
std::string changeFile(const std::string& path, const std::function<void(ZALTag&)>& change,
                       const std::function<std::string(const ZALTag&)>& missing = nullptr);

/// The same for several files, with a line for each one that failed. Gives the exit status.
int changeFiles(const std::vector<std::string>& paths, const std::function<void(ZALTag&)>& change,
                const std::function<std::string(const ZALTag&)>& missing = nullptr);

/// The files a command walks over, and the folders that could not be read.
struct FoundFiles {
    std::vector<std::string> paths;
    std::vector<std::pair<std::string, std::string>> failures;  ///< path and reason
};

/// Every supported file below the paths, in the order of the names, without hidden folders and the "._" files
/// of other systems. A file that is named itself is taken whatever its type, so that the command can say what
/// is wrong with it. Links to folders below a path are not followed.
FoundFiles findFiles(const std::vector<std::string>& paths);
