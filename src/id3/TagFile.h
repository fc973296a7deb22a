#pragma once

#include "id3/TagLibStream.h"
#include "platform/Log.h"

#include <zaltag/base/ZALText.h>

#include <exception>
#include <string>
#include <utility>

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

/// Saves for save(): `write` puts what changes into the stream, which is then committed. False, with a log
/// line, when that throws. What could not be saved is taken out of the stream again.
template <typename Write>
bool saveTag(const ZALNullableString& path, TagLibStream& stream, Write write) {
    bool isSaved = false;
    try {
        isSaved = write() && stream.commit();
    } catch (const std::exception& exception) {
        logf("could not save '{}': {}", describe(path), exception.what());
    }
    if (!isSaved) stream.revert();
    return isSaved;
}

/// Has a file put what changed into its stream and commits it. False, with one log line, when that fails;
/// `isRefused` tells that the file is of a kind that cannot be saved.
template <typename File, typename... Arguments>
bool saveFile(const ZALNullableString& path, TagLibStream& stream, File& file, bool& isRefused,
              Arguments&&... arguments) {
    const bool isSaved = saveTag(path, stream, [&] {
        const std::string refusal =
            stream.canCommit() ? file.write(std::forward<Arguments>(arguments)...) : std::string();
        isRefused = !refusal.empty() && stream.canCommit();
        if (isRefused) logf("could not save '{}': {}", describe(path), refusal);
        return !isRefused;  // the commit says what else is wrong
    });
    if (isSaved) file.accept();
    return isSaved;
}

/// The same for who does not ask why.
template <typename File, typename... Arguments>
bool saveFile(const ZALNullableString& path, TagLibStream& stream, File& file, Arguments&&... arguments) {
    bool isRefused = false;
    return saveFile(path, stream, file, isRefused, std::forward<Arguments>(arguments)...);
}

}  // namespace zal
