#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALText.h>

#include <cstddef>
#include <memory>
#include <string>

/// Remembers folders that the user has opened to a program that may not open others, and asks for the access
/// again in a later run. Every operation may be called from any thread.
class ZALTAG_EXPORT ZALFolderBookmarks {
  public:
    virtual ~ZALFolderBookmarks();

    /// Bytes that a later run finds the folder by; null when none can be made. The options are the
    /// platform's, by number.
    virtual ZALNullableData bookmarkForFolder(const std::string& path, unsigned options) = 0;
    /// The absolute path of the folder; null when the bytes lead to none.
    virtual ZALNullableString resolveBookmark(ZALDataView bookmark, unsigned options) = 0;

    /// Opens the folder to this process until as many calls of stopAccess(). False when that is refused; then
    /// there is nothing to stop.
    virtual bool startAccess(const std::string& path) = 0;
    virtual void stopAccess(const std::string& path) = 0;
    /// How many accesses to the folder are open; 0 unless it is overridden by who counts them.
    virtual std::size_t accessCount(const std::string& path) const;

    /// The machine's own, for programs that may open what their user may: a bookmark is the folder's absolute
    /// path, an existing folder grants access, and accesses are counted. Options are not looked at.
    static std::shared_ptr<ZALFolderBookmarks> machine();
};
