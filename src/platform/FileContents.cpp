#include "platform/FileContents.h"

#include <zaltag/platform/ZALHost.h>

namespace zal {

ZALData fileContents(const std::string& path, std::size_t sizeMax, std::error_code& error) {
    const auto handle = ZALHost::shared().fileSystem()->open(path, false, error);
    if (!handle) return {};
    ZALFileAttributes attributes;
    error = handle->attributes(attributes);
    if (error) return {};
    if (attributes.kind != ZALFileKind::regular || attributes.size > sizeMax) {
        error = std::make_error_code(attributes.kind == ZALFileKind::regular ? std::errc::file_too_large
                                                                             : std::errc::invalid_argument);
        return {};
    }
    ZALData bytes(static_cast<std::size_t>(attributes.size));
    std::size_t count = 0;
    error = handle->readAt(0, bytes, count);
    bytes.resize(error ? 0 : count);
    return bytes;
}

}  // namespace zal
