#include <zaltag/traktor/ZALTraktorDatabase.h>

#include "collection/CollectionIndex.h"
#include "collection/NFD.h"
#include "traktor/TrackLocation.h"
#include "traktor/TraktorProgram.h"

#include <zaltag/platform/ZALHost.h>
#include <zaltag/traktor/ZALTraktorQueue.h>

#include <algorithm>
#include <cstring>
#include <set>

const std::string ZALTraktorDatabaseFileUserSetLocationURL = "TraktorFileUserSetLocationURL";
const std::string ZALTraktorFileFolderSandboxedBookmarkDataKey = "TraktorFileFolderSandboxedBookmarkDataKey";

namespace {

constexpr const char* cueName = "CUE_V2";

void readTrack(zal::XMLAttributes, zal::TrackDraft&) {}

// The first place is the one that counts.
void readChild(const char* name, zal::XMLAttributes attributes, zal::TrackDraft& draft) {
    if (std::strcmp(name, cueName) == 0) {
        draft.hasMarks = true;
        draft.hasColor = draft.hasColor || zal::valueOf(attributes, "COLOR") != nullptr;
        ++draft.cues;
    } else if (!draft.hasPlace && std::strcmp(name, "LOCATION") == 0) {
        draft.hasPlace = true;
        constexpr const char* parts[] = {"VOLUME", "DIR", "FILE"};
        for (std::size_t i = 0; i < std::size(parts); ++i) {
            if (const char* const part = zal::valueOf(attributes, parts[i])) draft.place[i] = part;
        }
    }
}

zal::TrackKeys keysOf(const zal::TrackDraft& draft) {
    const zal::TraktorLocation location{draft.place[0], draft.place[1], draft.place[2]};
    const ZALNullableString path = zal::pathOf(location, ZALTraktorTrack::bootVolumeName());
    return {path ? zal::canonicalDecomposition(*path) : std::string(), zal::keyOf(location)};
}

template <typename Function>
void forEachPlaylist(const zal::XMLElement& playlists, const Function& function) {
    static constexpr const char* nodes[] = {"NODE", "SUBNODES", "NODE"};
    zal::forEachElement(playlists, nodes, [&](const zal::XMLElement& node) {
        if (node.attributeText("TYPE") == "PLAYLIST") function(node);
    });
}

// The tracks that playlists name, of several with one name the last.
ZALTraktorTrackMap tracksNamed(const std::set<std::string>& names, zal::ElementReader& reader) {
    std::set<std::uint64_t> hashes;
    for (const std::string& name : names) {
        hashes.insert(reader.index().hashOf(name));
    }
    ZALTraktorTrackMap map;
    const auto& tracks = reader.index().tracks();
    for (auto number = static_cast<std::uint32_t>(tracks.size());
         number-- > 0 && map.size() < names.size();) {
        if (!hashes.contains(tracks[number].nameHash)) continue;
        const auto track = reader.track(number);
        if (!track) break;
        const auto copy = static_cast<const ZALTraktorTrack&>(*track).copy();
        if (names.contains(copy->uniqueID())) map.emplace(copy->uniqueID(), copy);
    }
    return map;
}

}  // namespace

const zal::CollectionProgram& zal::traktorProgram() {
    static const CollectionProgram program = {
        .name = "Traktor",
        .databaseClass = "ZALTraktorDatabase",
        .queueClass = "ZALTraktorQueue",
        .userLocationKey = "TraktorFileUserSetLocationURL",
        .bookmarkKey = "TraktorFileFolderSandboxedBookmarkDataKey",
        .openFailure = "Unable to open Trakor database",  // the message has always been spelled so
        .writeFailure = "Failed to write to Traktor DB",
        .reloadFailure = "failed to reload the traktor db",
        .saveErrorText = "Error saving Traktor collection file.",
        .unreadable = ZALErrorCode::traktorCollectionUnreadable,
        .unwritable = ZALErrorCode::traktorCollectionUnwritable,
        .queueLabel = "com.quorvantis.TraktorQueue",
        .progressNotification = ZALTraktorQueueProgressChangedNotification.c_str(),
        .defaultFile = ZALTraktorDatabase::pathToMostLikelyActiveTraktorCollectionFile,
        .fileInFolder = ZALTraktorDatabase::traktorDBPathInPermittedFolder,
        .style = {.indent = "", .emptyElementTags = false},
        .rootName = "NML",
        .trackName = "ENTRY",
        .markName = cueName,
        .stamp = nullptr,
        .readTrack = readTrack,
        .readChild = readChild,
        .keysOf = keysOf,
        .pathOf = ZALTraktorTrack::pathOfXMLElement,
        .identityOf = ZALTraktorTrack::identityOfXMLElement,
        .trackOf = [](const XMLElement& element) -> std::unique_ptr<ZALCollectionTrack> {
            return ZALTraktorTrack::initWithXMLElement(element);
        },
        .copyOf = [](const ZALCollectionTrack& track) -> std::shared_ptr<const ZALCollectionTrack> {
            return static_cast<const ZALTraktorTrack&>(track).copy();
        },
    };
    return program;
}

ZALTraktorDatabase::ZALTraktorDatabase() : ZALCollectionDatabase(zal::traktorProgram()) {}

std::shared_ptr<ZALTraktorDatabase> ZALTraktorDatabase::sharedDatabase() {
    // Never destroyed: the queue may use it until the process ends.
    static const auto* const shared =
        new std::shared_ptr(initWithTraktorDatabaseFileAtURL(traktorDatabaseFileURL()));
    return *shared;
}

std::shared_ptr<ZALTraktorDatabase> ZALTraktorDatabase::initWithTraktorDatabaseFileAtURL(
    const ZALNullableString& url) {
    std::shared_ptr<ZALTraktorDatabase> database(new ZALTraktorDatabase);
    database->openFileAtURL(url);
    return database;
}

std::shared_ptr<ZALTraktorDatabase> ZALTraktorDatabase::databaseOfFileAtURL(const std::string& url) {
    std::shared_ptr<ZALTraktorDatabase> database(new ZALTraktorDatabase);
    database->stayWithFileAtURL(url);
    return database;
}

bool ZALTraktorDatabase::canExportToTraktor(ZALError* error) {
    const ZALHost& host = ZALHost::shared();
    const std::vector<std::string> programs = host.runningPrograms();
    if (std::none_of(programs.begin(), programs.end(), zal::isTraktor)) return true;
    if (error == nullptr) return false;
    *error = ZALError();
    error->domain = ZALTagErrorDomain;
    error->code = ZALErrorCode::traktorRunning;
    error->localizedDescription = host.localized(zal::traktorProgram().saveErrorText);
    error->localizedRecoverySuggestion = host.localized(
        "Unable to export cue points to Traktor because Traktor is currently running. Please "
        "quit Traktor and try again.");
    return false;
}

bool ZALTraktorDatabase::canExport(ZALError* error) const {
    return canExportToTraktor(error);
}

ZALNullableString ZALTraktorDatabase::traktorDatabaseFileURL() {
    return zal::collectionFileURL(zal::traktorProgram());
}

ZALNullableString ZALTraktorDatabase::traktorDatabaseURL() {
    return zal::collectionURL(zal::traktorProgram());
}

void ZALTraktorDatabase::setUserTraktorDatabaseFileURL(const std::string& url) {
    zal::setUserCollectionFileURL(zal::traktorProgram(), url);
}

ZALNullableString ZALTraktorDatabase::traktorBookmarkURL() {
    return zal::collectionBookmarkURL(zal::traktorProgram());
}

bool ZALTraktorDatabase::traktorDatabaseFileExists() {
    return zal::collectionFileExists(zal::traktorProgram());
}

bool ZALTraktorDatabase::hasPermissionForTraktorFolder() {
    return zal::hasPermissionForCollectionFolder(zal::traktorProgram());
}

void ZALTraktorDatabase::setTraktorDatabasePermissionsFolder(const ZALNullableString& folder) {
    zal::setCollectionPermissionsFolder(zal::traktorProgram(), folder);
}

bool ZALTraktorDatabase::loadTraktorDatabaseFromFileAtURL(const ZALNullableString& url, ZALError* error) {
    return loadFileAtURL(url, error);
}

std::vector<std::shared_ptr<const ZALTraktorTrack>> ZALTraktorDatabase::tracks() const {
    std::vector<std::shared_ptr<const ZALTraktorTrack>> all;
    all.reserve(trackCount());
    forEachTrack([&all](const auto& track) { all.push_back(track); });
    return all;
}

bool ZALTraktorDatabase::forEachTrack(
    const std::function<void(const std::shared_ptr<const ZALTraktorTrack>& track)>& function) const {
    return ZALCollectionDatabase::forEachTrack(
        [&function](const auto& track) { function(std::static_pointer_cast<const ZALTraktorTrack>(track)); });
}

std::shared_ptr<const ZALTraktorTrack> ZALTraktorDatabase::trackForSongFileAtURL(
    const ZALNullableString& path) const {
    return std::static_pointer_cast<const ZALTraktorTrack>(track(path));
}

std::vector<std::shared_ptr<const ZALTraktorPlaylist>> ZALTraktorDatabase::playlists() const {
    std::vector<std::shared_ptr<const ZALTraktorPlaylist>> all;
    const auto held = index();
    if (!held) return all;
    zal::ElementReader nodes(held);
    zal::ElementReader tracks(held);
    for (const zal::Span& span : held->frame().playlists) {
        const zal::XMLElement playlists = nodes.element(span);
        std::set<std::string> names;
        forEachPlaylist(playlists, [&](const zal::XMLElement& node) {
            ZALTraktorPlaylist::forEachKey(node, [&](const char* key) {
                if (key != nullptr) names.insert(key);
            });
        });
        const ZALTraktorTrackMap map = tracksNamed(names, tracks);
        forEachPlaylist(playlists, [&](const zal::XMLElement& node) {
            all.push_back(ZALTraktorPlaylist::initWithXMLElement(node, map));
        });
    }
    if (nodes.hasFailed() || tracks.hasFailed()) askForReload();
    return all;
}
