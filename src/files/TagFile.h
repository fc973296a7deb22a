#pragma once

#include "base/Paths.h"
#include "platform/Log.h"
#include "taglib/TagLibStream.h"

#include <zaltag/base/ZALText.h>

#include <exception>
#include <string>
#include <utility>

// What every back-end does around TagLib when it opens and saves a file.

namespace zal {

/// Opens a file for initWithPath(): `open` gives the tag object over it, or null with the reason. Null as
/// well, with a log line that names the operation, for a null path; for a path that the class does not
/// accept; and for a file whose sizes memory cannot hold.
template <typename Open>
auto openTag(const char* operation, const ZALNullableString& path, bool accepted, ZALError* error, Open open)
    -> decltype(open(*path, std::declval<Failure&>())) {
    Failure failure;
    if (!path) {
        logf("{} nil file path", operation);
        failure = "there is no path";
    } else if (!accepted) {
        failure = "unsupported file type";
    } else {
        try {
            const std::string file = absolutePath(*path);
            if (const auto tag = open(file, failure)) {
                tag->setPath(file);
                return tag;
            }
            if (!failure) failure = "not a readable audio file of its type: damaged, or misnamed";
        } catch (const std::exception& exception) {
            failure = exception.what();
        }
    }
    fillError(error, ZALErrorCode::openFailed, failure);
    return nullptr;
}

/// Saves for save(): `write` puts what changes into the stream, which is then committed. What could not be
/// saved is taken out of the stream again.
template <typename Write>
Failure saveTag(TagLibStream& stream, Write write) {
    Failure failure;
    try {
        failure = write();
        if (!failure) stream.commit(&failure);
    } catch (const std::exception& exception) {
        failure = exception.what();
    }
    if (failure) stream.revert();
    return failure;
}

/// Has a file put what changed into its stream and commits it; `isRefused` tells that the file is of a kind
/// that cannot be saved.
template <typename File, typename... Arguments>
Failure saveFile(TagLibStream& stream, File& file, bool& isRefused, Arguments&&... arguments) {
    const Failure failure = saveTag(stream, [&]() -> Failure {
        if (!stream.canCommit()) return {};  // the commit says what is wrong
        const Failure refusal = file.write(std::forward<Arguments>(arguments)...);
        isRefused = refusal && stream.canCommit();
        return isRefused ? refusal : Failure();
    });
    if (!failure) file.accept();
    return failure;
}

/// The same for who does not ask about that.
template <typename File, typename... Arguments>
Failure saveFile(TagLibStream& stream, File& file, Arguments&&... arguments) {
    bool isRefused = false;
    return saveFile(stream, file, isRefused, std::forward<Arguments>(arguments)...);
}

}  // namespace zal
