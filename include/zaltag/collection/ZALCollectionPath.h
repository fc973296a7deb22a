#pragma once

#include <zaltag/base/ZALExport.h>

#include <string>
#include <string_view>

// Collections are carried from machine to machine, and each system and program has its own way to write a
// path. These functions say what of two paths is the same.

/// A path with the drive or share of Windows in one form: "C:\Music", "/C:/Music" and "/Volumes/C:/Music"
/// give "C:/Music", and "\\nas\Music" gives "//nas/Music". Of other paths only a slash at the end goes.
ZALTAG_EXPORT std::string ZALCommonPath(std::string_view path);

/// The volume in front of a path, "/Volumes/NAME"; empty without one, and when it is a drive or share of
/// Windows.
ZALTAG_EXPORT std::string_view ZALVolumeOfPath(std::string_view path);

/// A path in Unicode canonical decomposition (NFD), as the collections' indexes have it. What is not UTF-8
/// stays.
ZALTAG_EXPORT std::string ZALDecomposedPath(std::string_view path);

/// What paths that may mean one file have in common: the common path behind its volume, in canonical
/// decomposition and in one letter case.
ZALTAG_EXPORT std::string ZALLoosePath(std::string_view path);
