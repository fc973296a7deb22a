#include "tools/CopyFiles.h"

#include <zaltag/platform/ZALFileSystem.h>
#include <zaltag/platform/ZALHost.h>

namespace zal {

bool isSameFile(const std::string& path, const std::string& other) {
    const auto files = ZALHost::shared().fileSystem();
    ZALFileAttributes one;
    ZALFileAttributes two;
    if (files->attributes(path, one) || files->attributes(other, two)) return false;
    return one.device == two.device && one.inode == two.inode;
}

}  // namespace zal
