#include "Collections.h"

#include "Assignments.h"
#include "CuePlaces.h"
#include "Files.h"
#include "Output.h"

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace {

template <typename Database>
ZALNullableString keyIn(const std::string& path) {
    const auto track = Database::sharedDatabase()->trackForSongFileAtURL(path);
    return track ? track->decomposedStringWithCanonicalMapping() : std::nullopt;
}

// Its queue leaves alone what Traktor changed after the request, and what it cannot tell the date of.
std::string whyLeftOutOfTraktor(const std::string& path) {
    const auto track = ZALTraktorDatabase::sharedDatabase()->trackForSongFileAtURL(path);
    const auto date = track ? track->modificationDate() : std::nullopt;
    if (!date) return "its entry in the Traktor collection has no date";
    return *date > ZALHost::shared().clock()->now() ? "its entry in the Traktor collection is newer" : "";
}

constexpr Collection rekordbox = {
    "Rekordbox",
    [] { return ZALRekordboxDatabase::sharedDatabase()->isRekordboxDBLoaded(); },
    [](ZALError* error) { return ZALRekordboxDatabase::sharedDatabase()->reload(error); },
    [] { return ZALRekordboxDatabase::rekordboxDatabaseFileURL(); },
    keyIn<ZALRekordboxDatabase>,
    [] { return std::string(); },
    [](const std::string&) { return std::string(); },
    [](ZALCompletion completion) { ZALRekordboxQueue::sharedQueue()->save(std::move(completion)); },
};

constexpr Collection traktor = {
    "Traktor",
    [] { return ZALTraktorDatabase::sharedDatabase()->isTraktorDBLoaded(); },
    [](ZALError* error) { return ZALTraktorDatabase::sharedDatabase()->reload(error); },
    [] { return ZALTraktorDatabase::traktorDatabaseFileURL(); },
    keyIn<ZALTraktorDatabase>,
    [] {
        ZALError error;
        return ZALTraktorDatabase::canExportToTraktor(&error)
                   ? std::string()
                   : error.localizedDescription + " " + error.localizedRecoverySuggestion;
    },
    whyLeftOutOfTraktor,
    [](ZALCompletion completion) { ZALTraktorQueue::sharedQueue()->save(std::move(completion)); },
};

ZALArray<ZALTagCuePoint> rekordboxCues(const std::string& path, bool memory) {
    std::vector<ZALTagCuePoint> cuePoints;
    if (const auto track = ZALRekordboxDatabase::sharedDatabase()->trackForSongFileAtURL(path)) {
        for (const ZALRekordboxCuePoint& cue : track->cues()) {
            if ((cue.num() == -1) == memory) {
                cuePoints.push_back(ZALTagCuePoint::cuePointWithTime(cue.start(), cue.name()));
            }
        }
    }
    return cuePoints;
}

// What the queues make of cue points: sorted, and moved to the beats of the track.
ZALArray<ZALTagCuePoint> onGrid(const ZALCollectionTrack& track, const ZALArray<ZALTagCuePoint>& cuePoints) {
    return cuePointsAdjustedToBeatTimes(sortedCuePoints(cuePoints),
                                        track.beatTimes().value_or(ZALArray<double>()));
}

template <bool hot, bool memory>
bool rekordboxHolds(const std::string& path, const ZALArray<ZALTagCuePoint>& cuePoints) {
    const auto track = ZALRekordboxDatabase::sharedDatabase()->trackForSongFileAtURL(path);
    if (!track) return false;
    std::vector<ZALRekordboxCuePoint> hotCues;
    std::vector<ZALRekordboxCuePoint> memoryCues;
    for (const ZALTagCuePoint& cue : onGrid(*track, cuePoints)) {
        const auto slot = static_cast<std::int64_t>(hotCues.size());
        hotCues.push_back(ZALRekordboxCuePoint::rekordboxCueWithCuePoint(cue, slot).copyAsStored());
        memoryCues.push_back(ZALRekordboxCuePoint::rekordboxCueWithCuePoint(cue, -1).copyAsStored());
    }
    std::vector<ZALRekordboxCuePoint> hotFound;
    std::vector<ZALRekordboxCuePoint> memoryFound;
    for (const ZALRekordboxCuePoint& cue : track->cues()) {
        (cue.num() == -1 ? memoryFound : hotFound).push_back(cue);
    }
    return (!hot || hotFound == hotCues) && (!memory || memoryFound == memoryCues);
}

ZALArray<ZALTagCuePoint> traktorCues(const std::string& path) {
    std::vector<ZALTagCuePoint> cuePoints;
    if (const auto track = ZALTraktorDatabase::sharedDatabase()->trackForSongFileAtURL(path)) {
        for (const ZALTraktorCuePoint& cue : track->cues()) {
            if (cue.isGrid()) continue;
            cuePoints.push_back(ZALTagCuePoint::cuePointWithTime(cue.startTime(), cue.name()));
        }
    }
    return cuePoints;
}

bool traktorHolds(const std::string& path, const ZALArray<ZALTagCuePoint>& cuePoints) {
    const auto track = ZALTraktorDatabase::sharedDatabase()->trackForSongFileAtURL(path);
    if (!track) return false;
    std::vector<ZALTraktorCuePoint> wanted;
    for (const ZALTagCuePoint& cue : onGrid(*track, cuePoints)) {
        const auto slot = static_cast<std::int64_t>(wanted.size());
        wanted.push_back(ZALTraktorCuePoint::traktorCueWithCuePoint(cue, slot).copyAsStored());
    }
    std::vector<ZALTraktorCuePoint> found;
    for (const ZALTraktorCuePoint& cue : track->cues()) {
        if (!cue.isGrid()) found.push_back(cue);
    }
    return found == wanted;
}

void requestTraktor(const std::string& path, const ZALArray<ZALTagCuePoint>& cuePoints) {
    ZALTraktorQueue::sharedQueue()->setCuePoints(cuePoints, path);
}

template <bool hot, bool memory>
void requestRekordbox(const std::string& path, const ZALArray<ZALTagCuePoint>& cuePoints) {
    ZALRekordboxQueue::sharedQueue()->setCuePoints(cuePoints, path, hot, memory);
}

constexpr CollectionPlace places[] = {
    {"rekordbox-hot", &rekordbox, [](const std::string& path) { return rekordboxCues(path, false); },
     rekordboxHolds<true, false>, requestRekordbox<true, false>, true},
    {"rekordbox-memory", &rekordbox, [](const std::string& path) { return rekordboxCues(path, true); },
     rekordboxHolds<false, true>, requestRekordbox<false, true>, true},
    // Both lists, which a write makes the same.
    {"rekordbox", &rekordbox, [](const std::string& path) { return rekordboxCues(path, false); },
     rekordboxHolds<true, true>, requestRekordbox<true, true>, false},
    {"traktor", &traktor, traktorCues, traktorHolds, requestTraktor, true},
};

}  // namespace

bool hasTrack(const Collection& collection, const std::string& path) {
    return collection.keyOf(path).has_value();
}

std::string whyNotWritten(const Collection& collection, const std::string& path) {
    const std::string reason = collection.whyLeftOut(path);
    if (!reason.empty()) return "was left alone: " + reason;
    return fmt::format("has other cue points in the {} collection than asked for", collection.name);
}

void addCollectionOptions(CLI::App& command, CollectionOptions& options) {
    command.add_option("--rekordbox", options.rekordbox, "The Rekordbox collection to use (XML)")
        ->type_name("FILE");
    command.add_option("--traktor", options.traktor, "The Traktor collection to use (NML)")
        ->type_name("FILE");
    command.add_option("--boot-volume", options.bootVolume, "Traktor's name of the startup volume")
        ->type_name("NAME");
}

void useCollections(const CollectionOptions& options) {
    ZALHost& host = ZALHost::shared();
    const auto settings = ZALUserDefaults::inMemory(host.userDefaults());
    bool isNamed = false;
    const auto name = [&](const std::string& key, const std::optional<std::string>& file) {
        if (file && file->empty()) throw UsageError("an empty name is no collection file");
        if (file) settings->setString(key, collectionPath(*file));
        isNamed = isNamed || file;
    };
    name(ZALRekordboxDatabaseFileUserSetLocationURL, options.rekordbox);
    name(ZALTraktorDatabaseFileUserSetLocationURL, options.traktor);
    if (isNamed) {
        host.setUserDefaults(settings);
        // A collection that is named is used wherever this program runs.
        host.setEnvironment([](const std::string& variable) -> ZALNullableString {
            const char* value =
                variable == "APP_SANDBOX_CONTAINER_ID" ? nullptr : std::getenv(variable.c_str());
            return value == nullptr ? ZALNullableString() : value;
        });
    }
    if (options.bootVolume) host.setBootVolumeName(*options.bootVolume);
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

std::string whyNotUsable(const Collection& collection) {
    // The first use of a collection loads it, and logs a failure without its reason for a person.
    ZALHost::shared().setLogSink([](const std::string&) {});
    ZALError error;
    const bool isLoaded = collection.isLoaded() || collection.reload(&error);
    const ZALNullableString file = collection.file();
    ZALHost::shared().setLogSink({});
    if (isLoaded) return {};
    if (!file) {
        return fmt::format("no {} collection was found (--{} FILE names one)", collection.name,
                           CLI::detail::to_lower(collection.name));
    }
    const auto cause = error.underlyingError;
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
    bool isDone = false;
    Saved saved;
    // The line of a failed write holds the whole document; its reason comes with the error.
    ZALHost::shared().setLogSink([](const std::string& line) {
        if (!line.starts_with("Failed to write to ")) std::fputs((printable(line) + "\n").c_str(), stderr);
    });
    collection.save([&](bool succeeded, const ZALError* error) {
        isDone = true;
        saved.success = succeeded && error == nullptr;
        if (error == nullptr) return;
        saved.reason = error->localizedDescription;
        if (!error->localizedRecoverySuggestion.empty())
            saved.reason += " " + error->localizedRecoverySuggestion;
        if (error->underlyingError) saved.reason += " (" + error->underlyingError->localizedDescription + ")";
        saved.mayBeTriedAgain = error->code == ZALErrorCode::rekordboxCollectionUnwritable ||
                                error->code == ZALErrorCode::traktorCollectionUnwritable;
    });
    while (!isDone) {
        ZALMainQueue::shared().runUntil([&] { return isDone; }, std::chrono::hours(1));
    }
    ZALHost::shared().setLogSink({});
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
    if (saved.success && collection.isLoaded()) return {};
    const std::string what = fmt::format("the {} collection was not written", collection.name);
    return saved.reason.empty() ? what : fmt::format("{}: {}", what, printable(saved.reason));
}

std::string collectionPath(const std::string& path) {
    return std::filesystem::path(absolutePath(path)).lexically_normal().string();
}
