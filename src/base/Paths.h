#pragma once

#include <string>
#include <string_view>

namespace zal {

/// A path that stands for the same file wherever the program goes: below the working folder unless it is
/// absolute, and otherwise as it is.
std::string absolutePath(const std::string& path);

/// The last component of a path, trailing slashes left aside; empty for "/" and "".
std::string_view lastPathComponent(std::string_view path);

/// What stands behind the last slash of a path; empty for one that ends with it.
std::string_view fileNameOf(std::string_view path);

/// The path of the folder that a file is in: "." for a bare name.
std::string folderOf(std::string_view path);

/// What stands after the last "." of the last component; empty without one, and for a name that only begins
/// with it.
std::string_view pathExtension(std::string_view path);

/// The last component without its extension and the "." before it.
std::string_view baseName(std::string_view path);

}  // namespace zal
