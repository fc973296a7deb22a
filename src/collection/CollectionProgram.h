#pragma once

#include "collection/XML.h"
#include "collection/XMLMarkup.h"

#include <zaltag/base/ZALError.h>
#include <zaltag/base/ZALText.h>
#include <zaltag/collection/ZALCollectionTrack.h>

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zal {

/// What a track's element says, as far as the index is made of it.
struct TrackDraft {
    std::uint64_t begin = 0;  ///< of the element
    std::uint64_t end = 0;
    std::int32_t id = 0;
    std::uint32_t cues = 0;
    bool hasMarks = false;  ///< marks that are no cues count, too
    bool hasDuration = false;
    bool hasColor = false;                   ///< of a mark
    bool hasPlace = false;                   ///< what comes next has been read
    std::array<ZALNullableString, 3> place;  ///< where the audio file is, in the program's own words
};

/// What tracks are looked up by.
struct TrackKeys {
    std::string path;  ///< in Unicode canonical decomposition; empty when there is none
    std::string name;  ///< what playlists know the track by
};

/// An attribute's value as a text; null without one.
ZALNullableString nullable(const char* value);
/// A number of bytes or other units, and of seconds, as attributes have them; null without one above 0.
std::optional<std::uint64_t> sizeIn(const char* value);
std::optional<double> durationIn(const char* value);

/// Names and values that follow one another, up to a null.
using XMLAttributes = const char* const*;

/// The value of an attribute; null when the element lacks it.
const char* valueOf(XMLAttributes attributes, std::string_view name);

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

    // The file.
    const char* rootName;
    const char* trackName;  ///< of the elements of /root/COLLECTION
    const char* markName;
    /// What a save notes in the root's tag, of its maker; null for nothing.
    std::vector<XMLAttributeEdit> (*stamp)();
    void (*readTrack)(XMLAttributes attributes, TrackDraft& draft);
    void (*readChild)(const char* name, XMLAttributes attributes, TrackDraft& draft);
    TrackKeys (*keysOf)(const TrackDraft& draft);
    /// The path that a track's element gives, and all that it says of its file.
    ZALNullableString (*pathOf)(const XMLElement& track);
    ZALTrackIdentity (*identityOf)(const XMLElement& track);
    /// The track of an element, which it belongs to.
    std::unique_ptr<ZALCollectionTrack> (*trackOf)(const XMLElement& element);
    /// A copy that stands for itself.
    std::shared_ptr<const ZALCollectionTrack> (*copyOf)(const ZALCollectionTrack& track);
};

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
