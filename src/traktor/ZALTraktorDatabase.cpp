#include <zaltag/traktor/ZALTraktorDatabase.h>

#include "traktor/TraktorProgram.h"

#include <zaltag/platform/ZALHost.h>
#include <zaltag/traktor/ZALTraktorQueue.h>

#include <algorithm>
#include <mutex>

const std::string ZALTraktorDatabaseFileUserSetLocationURL = "TraktorFileUserSetLocationURL";
const std::string ZALTraktorFileFolderSandboxedBookmarkDataKey = "TraktorFileFolderSandboxedBookmarkDataKey";

namespace {

using TrackCopies = std::unordered_map<const ZALTraktorTrack*, std::shared_ptr<const ZALTraktorTrack>>;

struct TraktorContents : zal::CollectionContents {
    // Their tracks are those of the collection, which owns them.
    std::vector<std::shared_ptr<const ZALTraktorPlaylist>> playlists;
};

ZALTraktorTrackMap mapOf(const std::vector<std::unique_ptr<ZALCollectionTrack>>& tracks) {
    ZALTraktorTrackMap map;
    map.reserve(tracks.size());
    for (const auto& track : tracks) {
        const auto* mapped = static_cast<const ZALTraktorTrack*>(track.get());
        map[mapped->uniqueID()] = std::shared_ptr<const ZALTraktorTrack>(std::shared_ptr<void>(), mapped);
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

std::unique_ptr<zal::CollectionContents> ZALTraktorDatabase::tracksOf(
    const zal::XMLDocument& document) const {
    auto contents = std::make_unique<TraktorContents>();
    std::vector<std::unique_ptr<ZALCollectionTrack>> all;
    static constexpr const char* tracks[] = {"COLLECTION", "ENTRY"};
    zal::forEachElement(document.root("NML"), tracks, [&all](const zal::XMLElement& element) {
        all.push_back(ZALTraktorTrack::initWithXMLElement(element));
    });
    contents->setTracks(std::move(all));
    return contents;
}

void ZALTraktorDatabase::readPlaylists(zal::CollectionContents& contents) const {
    const ZALTraktorTrackMap map = mapOf(contents.tracks);
    static constexpr const char* nodes[] = {"PLAYLISTS", "NODE", "SUBNODES", "NODE"};
    zal::forEachElement(contents.document->root("NML"), nodes, [&](const zal::XMLElement& node) {
        if (node.attributeText("TYPE") != "PLAYLIST") return;
        static_cast<TraktorContents&>(contents).playlists.push_back(
            ZALTraktorPlaylist::initWithXMLElement(node, map));
    });
}

std::vector<std::shared_ptr<const ZALTraktorTrack>> ZALTraktorDatabase::tracks() const {
    const std::shared_lock guard(lock());
    return zal::copiesOfTracks<ZALTraktorTrack>(contents().get());
}

std::shared_ptr<const ZALTraktorTrack> ZALTraktorDatabase::trackForSongFileAtURL(
    const ZALNullableString& path) const {
    const std::shared_lock guard(lock());
    const auto* track = static_cast<const ZALTraktorTrack*>(liveTrackForSongFileAtURL(path));
    return track == nullptr ? nullptr : track->copy();
}

std::vector<std::shared_ptr<const ZALTraktorPlaylist>> ZALTraktorDatabase::playlists() const {
    const std::shared_lock guard(lock());
    std::vector<std::shared_ptr<const ZALTraktorPlaylist>> all;
    if (contents() == nullptr) return all;
    TrackCopies copies;
    const auto copyOf = [&copies](const std::shared_ptr<const ZALTraktorTrack>& track) {
        auto& copy = copies[track.get()];
        if (!copy) copy = track->copy();
        return copy;
    };
    for (const auto& playlist : static_cast<const TraktorContents&>(*contents()).playlists) {
        all.push_back(playlist->copy(copyOf));
    }
    return all;
}
