#pragma once

#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALText.h>

#include <functional>
#include <memory>
#include <string>

/// Where the user's cloud storage keeps files that may not be on this machine yet. A host that knows such
/// storage sets one with ZALHost::setCloudStorage(); this machine has none.
class ZALTAG_EXPORT ZALCloudStorage {
  public:
    virtual ~ZALCloudStorage();

    /// True when the file belongs to the cloud storage.
    virtual bool isUbiquitousItem(const std::string& path) = 0;
    /// Makes the file present and returns the path to read it under; blocks until then. Null on failure, with
    /// the reason in `error`.
    virtual ZALNullableString coordinateReading(const std::string& path, std::string& error) = 0;
};

/// Makes sure that a file kept in cloud storage is present before it is used.
class ZALTAG_EXPORT ZALTagCloudFileResolver {
  public:
    /// Takes the path to read, or null when the file could not be had.
    using Completion = std::function<void(const ZALNullableString& path)>;

    /// Calls the completion before it returns, on the caller's thread: with the same path for a file that is
    /// no cloud file, else with the path the storage hands over once the file is there. A failure is one log
    /// line and null.
    static void resolveCloudBeforeUsingFileAtUrl(const std::string& path, const Completion& completion);
};
