#include "Collections.h"

#include "Assignments.h"
#include "CuePlaces.h"
#include "Files.h"
#include "Output.h"
#include "PathMaps.h"

#include <zaltag/collection/ZALCollectionPath.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <filesystem>
#include <map>
#include <thread>

namespace {

CollectionOptions inUse;

template <typename Database>
const std::shared_ptr<Database>& databaseInUse(const std::optional<std::string>& file) {
    static const auto database =
        file ? Database::databaseOfFileAtURL(collectionPath(*file)) : Database::sharedDatabase();
    return database;
}

template <typename Queue, typename Database>
const std::shared_ptr<Queue>& queueInUse(const std::optional<std::string>& file) {
    static const auto queue =
        file ? Queue::queueWithDatabase(databaseInUse<Database>(file)) : Queue::sharedQueue();
    return queue;
}

constexpr Collection rekordbox = {
    "Rekordbox",
    "DJ_PLAYLISTS",
    []() -> std::shared_ptr<ZALCollectionDatabase> { return rekordboxDatabase(); },
    []() -> std::shared_ptr<ZALCollectionQueue> {
        return queueInUse<ZALRekordboxQueue, ZALRekordboxDatabase>(inUse.rekordbox);
    },
};

constexpr Collection traktor = {
    "Traktor",
    "NML",
    []() -> std::shared_ptr<ZALCollectionDatabase> { return traktorDatabase(); },
    []() -> std::shared_ptr<ZALCollectionQueue> {
        return queueInUse<ZALTraktorQueue, ZALTraktorDatabase>(inUse.traktor);
    },
};

constexpr CollectionPlace places[] = {
    {"rekordbox-hot", &rekordbox, ZALCueKind::hot, true},
    {"rekordbox-memory", &rekordbox, ZALCueKind::memory, true},
    // Both lists, which a write makes the same.
    {"rekordbox", &rekordbox, ZALCueKind::all, false},
    {"traktor", &traktor, ZALCueKind::all, true},
};

void check(const std::optional<std::string>& file) {
    if (file && file->empty()) throw UsageError("an empty name is no collection file");
}

}  // namespace

std::shared_ptr<ZALRekordboxDatabase> rekordboxDatabase() {
    return databaseInUse<ZALRekordboxDatabase>(inUse.rekordbox);
}

std::shared_ptr<ZALTraktorDatabase> traktorDatabase() {
    return databaseInUse<ZALTraktorDatabase>(inUse.traktor);
}

void Collection::request(const std::string& path, const ZALArray<ZALTagCuePoint>& cuePoints,
                         const ZALCueRequest& request) const {
    queue()->setCuePoints(cuePoints, path, request);
}

bool Collection::holds(const std::string& path, const ZALArray<ZALTagCuePoint>& cuePoints,
                       const ZALCueRequest& request) const {
    const auto found = track(path);
    return found && found->hasCuePoints(cuePoints, request);
}

std::string Collection::whyNotWritable() const {
    ZALError error;
    return database()->canExport(&error)
               ? std::string()
               : error.localizedDescription + " " + error.localizedRecoverySuggestion;
}

std::string Collection::whyLeftOut(const std::string& path, const ZALCueRequest& request) const {
    const auto found = track(path);
    return found ? found->whyLeftOut(ZALHost::shared().clock()->now(), request) : std::string();
}

std::string Collection::whyNotWritten(const std::string& path, const ZALCueRequest& request) const {
    const std::string reason = whyLeftOut(path, request);
    if (!reason.empty()) return "was left alone: " + reason;
    return fmt::format("has other cue points in the {} collection than asked for", name);
}

ZALArray<ZALTagCuePoint> CollectionPlace::read(const std::string& path) const {
    const auto track = collection->track(path);
    return track ? track->cuePoints(kind) : ZALArray<ZALTagCuePoint>();
}

void addCollectionOptions(CLI::App& command, CollectionOptions& options) {
    command.add_option("--rekordbox", options.rekordbox, "The Rekordbox collection to use (XML)")
        ->type_name("FILE");
    command.add_option("--traktor", options.traktor, "The Traktor collection to use (NML)")
        ->type_name("FILE");
    command.add_option("--map", options.maps, "A folder of the collection that is TO here")
        ->type_name("FROM=TO")
        ->allow_extra_args(false);
    command.add_option("--boot-volume", options.bootVolume, "Traktor's name of the startup volume")
        ->type_name("NAME");
}

void addCollectionSaveOptions(CLI::App& command, CollectionOptions& options) {
    addCollectionOptions(command, options);
    command.add_flag("--rewrite-all", options.rewriteAll, "Rewrite every track that has cues");
}

void useCollections(const CollectionOptions& options) {
    check(options.rekordbox);
    check(options.traktor);
    inUse = options;
    std::vector<PathMap> maps;
    for (const std::string& map : options.maps) {
        maps.push_back(pathMapOf(map));
    }
    usePathMaps(std::move(maps));
    ZALHost& host = ZALHost::shared();
    host.setCollectionSaveMode(options.rewriteAll ? ZALCollectionSaveMode::everyTrackWithCues
                                                  : ZALCollectionSaveMode::changedTracks);
    if (options.bootVolume) host.setBootVolumeName(*options.bootVolume);
}

const Collection* collectionOf(const std::string& program) {
    for (const CollectionPlace& place : places) {
        if (place.collection->name == program) return place.collection;
    }
    return nullptr;
}

const CollectionPlace* collectionPlace(const std::string& name) {
    for (const CollectionPlace& place : places) {
        if (name == place.name) return &place;
    }
    return nullptr;
}

std::vector<std::string> collectionPlaceNames(bool readableOnly) {
    std::vector<std::string> names;
    for (const CollectionPlace& place : places) {
        if (place.isReadable || !readableOnly) names.emplace_back(place.name);
    }
    return names;
}

std::vector<std::string> allPlaceNames(bool readableOnly) {
    std::vector<std::string> names = cuePlaceNames();
    for (const std::string& name : collectionPlaceNames(readableOnly)) {
        names.push_back(name);
    }
    return names;
}

namespace {

// The volume without which most files of the first tracks are here; empty when they have none.
std::string volumeThatIsHere(const ZALCollectionDatabase& database) {
    constexpr int looked = 2000;
    std::map<std::string, int> counts;
    ZALCollectionCursor cursor = database.tracksInOrder();
    for (int i = 0; i < looked; ++i) {
        const auto track = cursor.next();
        if (!track) break;
        const std::string path = track->path().value_or("");
        const std::string volume(ZALVolumeOfPath(path));
        std::error_code ignored;
        if (std::filesystem::exists(path.substr(volume.size()), ignored)) ++counts[volume];
    }
    const auto most = std::max_element(counts.begin(), counts.end(),
                                       [](const auto& a, const auto& b) { return a.second < b.second; });
    const std::string volume = most == counts.end() ? std::string() : most->first;
    return volume.substr(volume.rfind('/') + 1);
}

// Traktor writes the volume that its system was started from like any other one. Nobody knows its name but
// who sees the files without it.
void findBootVolume(ZALCollectionDatabase& database) {
    const std::string name = volumeThatIsHere(database);
    if (name.empty()) return;
    ZALHost::shared().setBootVolumeName(name);
    database.reload();
}

}  // namespace

std::string whyNotUsable(const Collection& collection) {
    ZALError error;
    const auto database = collection.database();
    const bool isLoaded = database->isLoaded() || database->reload(&error);
    const ZALNullableString file = database->fileURL();
    if (isLoaded && &collection == &traktor && !inUse.bootVolume) findBootVolume(*database);
    if (isLoaded) return {};
    if (!file) {
        return fmt::format("no {} collection was found (--{} FILE names one)", collection.name,
                           CLI::detail::to_lower(collection.name));
    }
    const auto cause = error.underlyingError;
    const Collection& other = &collection == &rekordbox ? traktor : rekordbox;
    if (cause &&
        cause->localizedDescription.find(fmt::format("root is <{}>", other.root)) != std::string::npos) {
        return fmt::format("{}: this is a {} collection: use --{}", printable(*file), other.name,
                           CLI::detail::to_lower(other.name));
    }
    return fmt::format("{}: is no {} collection that can be read{}", printable(*file), collection.name,
                       cause ? ": " + printable(cause->localizedDescription) : "");
}

namespace {

struct Saved {
    bool success = false;
    bool mayBeTriedAgain = false;
    std::string reason;
};

Saved saveOnce(const Collection& collection) {
    ZALError error;
    Saved saved{collection.queue()->saveAndWait(&error), false, error.localizedDescription};
    if (!error.localizedRecoverySuggestion.empty()) saved.reason += " " + error.localizedRecoverySuggestion;
    if (error.underlyingError) saved.reason += " (" + error.underlyingError->localizedDescription + ")";
    saved.mayBeTriedAgain = error.code == ZALErrorCode::rekordboxCollectionUnwritable ||
                            error.code == ZALErrorCode::traktorCollectionUnwritable;
    return saved;
}

}  // namespace

std::string saveCollection(const Collection& collection) {
    // A failed save keeps the requests. Another program may be writing the collection: then the next batch
    // loads what it wrote and puts them into that.
    Saved saved = saveOnce(collection);
    for (int again = 0; again < 3 && saved.mayBeTriedAgain; ++again) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        saved = saveOnce(collection);
    }
    if (saved.success && collection.database()->isLoaded()) return {};
    const std::string what = fmt::format("the {} collection was not written", collection.name);
    return saved.reason.empty() ? what : fmt::format("{}: {}", what, printable(saved.reason));
}

std::string collectionPath(const std::string& path) {
    return std::filesystem::path(absolutePath(path)).lexically_normal().string();
}
