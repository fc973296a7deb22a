#pragma once

#include <zaltag/base/ZALExport.h>

#include <cstdint>
#include <memory>
#include <string>

/// What stands under a path, after following symbolic links.
enum class ZALFileKind { missing, regular, folder, other };

/// The file system as the library sees it. A host or a test replaces it through ZALHost before first use;
/// every operation may be called from any thread.
class ZALTAG_EXPORT ZALFileSystem {
  public:
    virtual ~ZALFileSystem();

    /// What stands under the path. `missing` also when it cannot be looked at.
    virtual ZALFileKind kindOfFile(const std::string& path) const = 0;

    /// The machine's own.
    static std::shared_ptr<ZALFileSystem> machine();
};
