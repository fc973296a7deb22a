#pragma once

#include "files/TagFile.h"
#include "platform/Log.h"
#include "taglib/TagLibStream.h"

#include <zaltag/base/ZALText.h>

#include <memory>
#include <string>

// What every copying function does around its copy.

namespace zal {

/// One of the two files, opened; the stream outlives TagLib's file over it.
template <typename File>
struct CopiedFile {
    std::string path;
    std::unique_ptr<TagLibStream> stream;
    std::unique_ptr<File> file;

    File* operator->() const { return file.get(); }
};

/// A copy that is under way.
template <typename Source, typename Destination>
struct Copy {
    const char* function;  ///< its signature, with which its messages begin
    CopiedFile<Source> source;
    CopiedFile<Destination> destination;
};

template <typename File>
using Opening = std::unique_ptr<File> (*)(TagLibStream& stream);

/// True when both paths lead to one file, links followed.
bool isSameFile(const std::string& path, const std::string& other);

template <typename File>
CopiedFile<File> openCopied(const std::string& path, bool readOnly, Opening<File> open) {
    CopiedFile<File> copied{path, TagLibStream::open(path, readOnly), nullptr};
    if (copied.stream != nullptr) copied.file = open(*copied.stream);
    return copied;
}

/// Opens both files and has `copy` do the rest. Not for a null path; with a log line when a file does not
/// open, and when both are one file.
template <typename Source, typename Destination>
Failure openAndCopy(const char* function, const ZALNullableString& source, Opening<Source> openSource,
                    const ZALNullableString& destination, Opening<Destination> openDestination,
                    Failure (*copy)(Copy<Source, Destination>& files)) {
    if (!source || !destination) return "there is no path";
    const auto fail = [function](const std::string& reason, const std::string& path) {
        logf("{}: {} '{}'", function, reason, path);
        return Failure(reason);
    };
    try {
        Copy<Source, Destination> files{function, openCopied(*source, true, openSource), {}};
        if (files.source.file == nullptr) return fail("source file not valid", *source);
        if (isSameFile(*source, *destination))
            return fail("source and destination are the same file", *destination);
        files.destination = openCopied(*destination, false, openDestination);
        if (files.destination.file == nullptr) return fail("destination file not valid", *destination);
        return copy(files);
    } catch (const std::exception& exception) {
        return fail(exception.what(), *destination);
    }
}

template <typename Source, typename Destination>
bool copyTags(const char* function, const ZALNullableString& source, Opening<Source> openSource,
              const ZALNullableString& destination, Opening<Destination> openDestination,
              Failure (*copy)(Copy<Source, Destination>& files), ZALError* error) {
    const Failure failure = openAndCopy(function, source, openSource, destination, openDestination, copy);
    return !failure || fillError(error, ZALErrorCode::saveFailed, failure);
}

/// Has the destination put what changed into its stream, from which it must then open again: the tags of two
/// files can be too much for one. Commits it then. A failure is a log line, a destination that is read-only
/// is one.
template <typename File>
Failure saveDestination(CopiedFile<File>& destination, Opening<File> open) {
    const Failure failure =
        destination.stream->readOnly() ? Failure("it is read-only") : saveTag(*destination.stream, [&] {
            Failure refusal = destination->write();
            if (!refusal && open(*destination.stream) == nullptr) refusal = "it could not be opened again";
            return refusal;
        });
    if (failure) logf("could not save '{}': {}", destination.path, failure.reason());
    return failure;
}

}  // namespace zal
