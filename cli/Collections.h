#pragma once

#include <zaltag/zaltag.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

/// Which collections a call uses instead of those that the library finds by itself, and how it saves them.
struct CollectionOptions {
    std::optional<std::string> rekordbox;
    std::optional<std::string> traktor;
    std::optional<std::string> bootVolume;
    std::vector<std::string> maps;  ///< each FROM=TO
    bool rewriteAll = false;
};

/// Adds --rekordbox, --traktor, --boot-volume and --map to a command.
void addCollectionOptions(CLI::App& command, CollectionOptions& options);
/// The same for a command that saves: --rewrite-all, too.
void addCollectionSaveOptions(CLI::App& command, CollectionOptions& options);
/// Uses them, for this process only and before the first collection is used. Throws UsageError for an empty
/// file name.
void useCollections(const CollectionOptions& options);

/// The databases that are in use; the first call loads them.
std::shared_ptr<ZALRekordboxDatabase> rekordboxDatabase();
std::shared_ptr<ZALTraktorDatabase> traktorDatabase();

/// A collection as the commands see it.
struct Collection {
    const char* name;
    const char* root;  ///< of its files
    std::shared_ptr<ZALCollectionDatabase> (*database)();
    std::shared_ptr<ZALCollectionQueue> (*queue)();

    std::shared_ptr<const ZALCollectionTrack> track(const std::string& path) const {
        return database()->track(path);
    }
    bool hasTrack(const std::string& path) const { return track(path) != nullptr; }
    /// Asks for the cues of a track to be replaced, and whether they are as that and a save would have them.
    void request(const std::string& path, const ZALArray<ZALTagCuePoint>& cuePoints,
                 const ZALCueRequest& request) const;
    bool holds(const std::string& path, const ZALArray<ZALTagCuePoint>& cuePoints,
               const ZALCueRequest& request) const;
    /// Why the collection must not be written now, or an empty text.
    std::string whyNotWritable() const;
    /// Why a request for a track would be left out now, or an empty text.
    std::string whyLeftOut(const std::string& path, const ZALCueRequest& request) const;
    /// What to say when a track does not have the cue points that were asked for, after a save.
    std::string whyNotWritten(const std::string& path, const ZALCueRequest& request = {}) const;
};

/// Where cue points stand in a collection.
struct CollectionPlace {
    const char* name;
    const Collection* collection;
    ZALCueKind kind;
    bool isReadable;  ///< it names one list of cue points, not two

    /// The cue points of a track that the collection holds.
    ZALArray<ZALTagCuePoint> read(const std::string& path) const;
    /// A request for the cues that the place means.
    ZALCueRequest requestedCues() const { return kind; }
};

/// The collection of a program, or null.
const Collection* collectionOf(const std::string& program);
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
