#pragma once

#include "id3/TagLibStream.h"
#include "platform/Log.h"

#include <zaltag/base/ZALText.h>

#include <exception>

// What every back-end does around TagLib when it opens and saves a file.

namespace zal {

/// Opens a file for initWithPath(): `open` gives the tag object over it, or null. Null as well, with a log
/// line that names the operation, for a null path; for a path that the class does not accept; and for a file
/// whose sizes memory cannot hold.
template <typename Open>
auto openTag(const char* operation, const ZALNullableString& path, bool accepted, Open open)
    -> decltype(open(*path)) {
    if (!path) {
        logf("{} nil file path", operation);
        return nullptr;
    }
    if (!accepted) return nullptr;
    try {
        const auto tag = open(*path);
        if (tag != nullptr) tag->setPath(path);
        return tag;
    } catch (const std::exception&) {
        return nullptr;
    }
}

/// Saves for save(): `write` has TagLib write, then the stream is committed. False, with a log line, when
/// that throws.
template <typename Write>
bool saveTag(const ZALNullableString& path, TagLibStream& stream, Write write) {
    try {
        return write() && stream.commit();
    } catch (const std::exception& exception) {
        logf("could not save '{}': {}", describe(path), exception.what());
        stream.giveUp(exception.what());  // TagLib may have written half of it
        return false;
    }
}

}  // namespace zal
