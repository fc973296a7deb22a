#pragma once

#include "platform/XML.h"

#include <zaltag/base/ZALError.h>
#include <zaltag/base/ZALText.h>
#include <zaltag/collection/ZALCollectionTrack.h>

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace zal {

/// In what the collections of the DJ programs differ, as far as one line can say it.
struct CollectionProgram {
    const char* name;           ///< as messages say it
    const char* databaseClass;  ///< as messages say it
    const char* queueClass;
    const char* userLocationKey;  ///< of the user defaults
    const char* bookmarkKey;      ///< of the user defaults
    const char* openFailure;      ///< begins the log line of a first load that failed
    const char* writeFailure;     ///< begins the log line of a save that failed
    const char* reloadFailure;    ///< stands in the log line of a batch whose reload failed
    const char* saveErrorText;    ///< the description of the error of a save
    ZALErrorCode unreadable;
    ZALErrorCode unwritable;
    const char* queueLabel;
    const char* progressNotification;
    /// The file where the program itself keeps it; null when it is not there.
    ZALNullableString (*defaultFile)();
    /// The file in a folder that the user has opened to this process; null when it is not there.
    ZALNullableString (*fileInFolder)(const std::string& folder);
    XMLStyle style;
};

/// A collection in memory: the document and what was made of it.
struct CollectionContents {
    virtual ~CollectionContents() = default;
    /// Takes the tracks and makes the index of them: of several tracks with one path, the last is found.
    void setTracks(std::vector<std::unique_ptr<ZALCollectionTrack>> all);

    std::unique_ptr<XMLDocument> document;
    std::vector<std::unique_ptr<ZALCollectionTrack>> tracks;  ///< in the order of the document
    std::unordered_map<std::string_view, ZALCollectionTrack*> byPath;  ///< by indexKey()
};

/// Copies of all tracks, for whoever asks a database.
template <typename Track>
std::vector<std::shared_ptr<const Track>> copiesOfTracks(const CollectionContents* contents) {
    std::vector<std::shared_ptr<const Track>> copies;
    if (contents == nullptr) return copies;
    copies.reserve(contents->tracks.size());
    for (const auto& track : contents->tracks) {
        copies.push_back(static_cast<const Track&>(*track).copy());
    }
    return copies;
}

/// Calls a function for every element that a path of names leads to, in the order of the document.
template <typename Function>
void forEachElement(const XMLElement& from, std::span<const char* const> path, const Function& function) {
    if (path.empty()) return function(from);
    for (auto child = from.firstChild(path[0]); child; child = child.next(path[0])) {
        forEachElement(child, path.subspan(1), function);
    }
}

// Where the collection file of a program is, by the user's choice, by the folder that a sandboxed process may
// open, or by the program's own rule.

/// The file to use now, or null. In a sandbox the access to its folder is left open.
ZALNullableString collectionFileURL(const CollectionProgram& program);
/// The user's file, or the program's own.
ZALNullableString collectionURL(const CollectionProgram& program);
ZALNullableString collectionBookmarkURL(const CollectionProgram& program);
bool collectionFileExists(const CollectionProgram& program);
bool hasPermissionForCollectionFolder(const CollectionProgram& program);
void setCollectionPermissionsFolder(const CollectionProgram& program, const ZALNullableString& folder);
void setUserCollectionFileURL(const CollectionProgram& program, const std::string& url);
ZALNullableString userCollectionFileURL(const CollectionProgram& program);

/// An error as the log shows it.
std::string describeError(const ZALError& error);

bool isSandboxed();
/// The path, when a file is there.
ZALNullableString existingFile(const std::string& path);
/// One path below another, with one slash between them, whatever slashes they have there.
std::string joinPaths(std::string_view folder, std::string_view name);

}  // namespace zal
