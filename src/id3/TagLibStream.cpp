#include "id3/TagLibStream.h"

#include <zaltag/platform/ZALHost.h>

namespace zal {

std::unique_ptr<TagLibStream> TagLibStream::open(const std::string& path, bool readOnly) {
    if (ZALHost::shared().fileSystem()->kindOfFile(path) != ZALFileKind::regular) return nullptr;
    std::unique_ptr<TagLibStream> stream(new TagLibStream(path.c_str(), readOnly));
    return stream->isOpen() ? std::move(stream) : nullptr;
}

bool TagLibStream::commit() {
    seek(0);  // flushes what the C library still holds back
    return !readOnly();
}

}  // namespace zal
