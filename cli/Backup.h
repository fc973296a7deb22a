#pragma once

#include <zaltag/platform/ZALFileSystem.h>

#include <functional>
#include <string>
#include <system_error>

// Copies of collections beside them, over the library's seam to the file system.

/// Writes a file whole or not at all, in the place of what stands there; the reason why not, or an empty
/// text. What is written goes into a hidden file beside it first.
std::string writeWhole(const std::string& path, std::uint32_t mode,
                       const std::function<std::error_code(ZALFileHandle& file)>& write);

/// Copies a file in the same way, with what it is known by.
std::string copyFile(const std::string& from, const std::string& to);

/// Copies a collection beside itself, as NAME.before-zaltag-YYYYMMDD-HHMMSS. The reason why not, or an empty
/// text; then `copy` is the copy's path.
std::string backUp(const std::string& collection, std::string& copy);
/// Takes away a collection's old copies but for the first one and the last five.
void removeOldCopies(const std::string& collection);

/// The digest of a file's content; empty when it cannot be read.
std::string digestOf(const std::string& path);

/// The moment as file names have it, YYYYMMDD-HHMMSS.
std::string timeStamp();
/// A path and what went wrong with it.
std::string reasonOf(const std::string& path, const std::error_code& error);
