#pragma once

#include <zaltag/zaltag.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

/// Which collections a call uses instead of those that the library finds by itself.
struct CollectionOptions {
    std::optional<std::string> rekordbox;
    std::optional<std::string> traktor;
    std::optional<std::string> bootVolume;
};

/// Adds --rekordbox, --traktor and --boot-volume to a command.
void addCollectionOptions(CLI::App& command, CollectionOptions& options);
/// Makes the library use them, for this process only. Throws UsageError for an empty file name.
void useCollections(const CollectionOptions& options);

/// A collection as the commands see it.
struct Collection {
    const char* name;
    bool (*isLoaded)();
    bool (*reload)(ZALError* error);
    ZALNullableString (*file)();
    /// The path that the collection knows the track of an audio file by, in one Unicode normalization; null
    /// when it has none.
    ZALNullableString (*keyOf)(const std::string& path);
    /// Why the collection must not be written now, or an empty text.
    std::string (*whyNotWritable)();
    /// Why a request for a track would be left out, or an empty text.
    std::string (*whyLeftOut)(const std::string& path);
    /// Writes what was asked for.
    void (*save)(ZALCompletion completion);
};

bool hasTrack(const Collection& collection, const std::string& path);
/// What to say when a track does not have the cue points that were asked for, after a save.
std::string whyNotWritten(const Collection& collection, const std::string& path);

/// Where cue points stand in a collection.
struct CollectionPlace {
    const char* name;
    const Collection* collection;
    /// The cue points of a track that the collection holds.
    ZALArray<ZALTagCuePoint> (*read)(const std::string& path);
    /// True when the track has what request() and a save would give it.
    bool (*holds)(const std::string& path, const ZALArray<ZALTagCuePoint>& cuePoints);
    void (*request)(const std::string& path, const ZALArray<ZALTagCuePoint>& cuePoints);
    bool isReadable;  ///< it names one list of cue points, not two
};

/// The place with a name, or null.
const CollectionPlace* collectionPlace(const std::string& name);
/// The names of all places, or of those that can be read.
std::vector<std::string> collectionPlaceNames(bool readableOnly);

/// The names of the places in files and in collections.
std::vector<std::string> allPlaceNames(bool readableOnly);

/// Loads a collection; the reason why it cannot be used, or an empty text.
std::string whyNotUsable(const Collection& collection);
/// Writes what was asked for and waits for it; the reason why not, or an empty text.
std::string saveCollection(const Collection& collection);

/// The path that collections know a file by: absolute and lexically normalised.
std::string collectionPath(const std::string& path);
