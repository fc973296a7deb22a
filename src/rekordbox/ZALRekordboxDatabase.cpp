#include <zaltag/rekordbox/ZALRekordboxDatabase.h>

#include "base/Paths.h"
#include "platform/Dates.h"
#include "rekordbox/PlaylistNode.h"
#include "rekordbox/RekordboxProgram.h"
#include "rekordbox/TrackLocation.h"

#include <zaltag/platform/ZALClock.h>
#include <zaltag/platform/ZALHost.h>
#include <zaltag/rekordbox/ZALRekordboxQueue.h>

#include <mutex>
#include <set>

const std::string ZALRekordboxDatabaseFileUserSetLocationURL = "RekordboxFileUserSetLocationURL";
const std::string ZALRekordboxFileFolderSandboxedBookmarkDataKey =
    "RekordboxFileFolderSandboxedBookmarkDataKey";

namespace {

constexpr const char* fileName = "rekordbox.xml";

zal::XMLElement rootOf(const zal::XMLDocument& document) {
    return document.root("DJ_PLAYLISTS");
}

zal::XMLElement rootNode(const zal::XMLDocument& document) {
    const auto root = rootOf(document);
    for (auto all = root.firstChild("PLAYLISTS"); all; all = all.next("PLAYLISTS")) {
        if (const auto node = all.firstChild(zal::playlistNodeName)) return node;
    }
    return {};
}

zal::RekordboxContents& rekordbox(zal::CollectionContents& contents) {
    return static_cast<zal::RekordboxContents&>(contents);
}

}  // namespace

const zal::CollectionProgram& zal::rekordboxProgram() {
    static const CollectionProgram program = {
        .name = "Rekordbox",
        .databaseClass = "ZALRekordboxDatabase",
        .queueClass = "ZALRekordboxQueue",
        .userLocationKey = "RekordboxFileUserSetLocationURL",
        .bookmarkKey = "RekordboxFileFolderSandboxedBookmarkDataKey",
        .openFailure = "Unable to open Rekordbox database",
        .writeFailure = "Failed to write to Rekordbox DB",
        .reloadFailure = "failed to reload the rekordbox db",
        .saveErrorText = "Error saving Rekordbox collection file.",
        .unreadable = ZALErrorCode::rekordboxCollectionUnreadable,
        .unwritable = ZALErrorCode::rekordboxCollectionUnwritable,
        .queueLabel = "com.quorvantis.RekordboxQueue",
        .progressNotification = ZALRekordboxQueueProgressChangedNotification.c_str(),
        .defaultFile = ZALRekordboxDatabase::pathToMostLikelyActiveRekordboxCollectionFile,
        .fileInFolder = ZALRekordboxDatabase::rekordboxDBPathInPermittedFolder,
        .style = {},
    };
    return program;
}

void zal::stampRoot(XMLElement root) {
    const ZALHost& host = ZALHost::shared();
    root.setAttribute("CreatedByApp", host.name());
    root.setAttribute("CreatedByVersion", host.version());
    root.setAttribute("CreationPlatform", "Mac");
    root.setAttribute("ModificationDate", stampDate(host.clock()->now()));
}

ZALRekordboxDatabase::ZALRekordboxDatabase() : ZALCollectionDatabase(zal::rekordboxProgram()) {}

std::shared_ptr<ZALRekordboxDatabase> ZALRekordboxDatabase::sharedDatabase() {
    // Never destroyed: the queue may use it until the process ends.
    static const auto* const shared =
        new std::shared_ptr(initWithRekordboxDatabaseFileAtURL(rekordboxDatabaseFileURL()));
    return *shared;
}

std::shared_ptr<ZALRekordboxDatabase> ZALRekordboxDatabase::initWithRekordboxDatabaseFileAtURL(
    const ZALNullableString& url) {
    std::shared_ptr<ZALRekordboxDatabase> database(new ZALRekordboxDatabase);
    database->openFileAtURL(url);
    return database;
}

bool ZALRekordboxDatabase::canExportToRekordbox(ZALError*) {
    return true;
}

bool ZALRekordboxDatabase::canExport(ZALError* error) const {
    return canExportToRekordbox(error);
}

ZALNullableString ZALRekordboxDatabase::rekordboxDatabaseFileURL() {
    return zal::collectionFileURL(zal::rekordboxProgram());
}

ZALNullableString ZALRekordboxDatabase::rekordboxDatabaseURL() {
    return zal::collectionURL(zal::rekordboxProgram());
}

ZALNullableString ZALRekordboxDatabase::pathToMostLikelyActiveRekordboxCollectionFile() {
    const std::vector<std::string> folders = ZALHost::shared().documentsFolders();
    if (folders.empty()) return std::nullopt;
    return zal::existingFile(zal::joinPaths(folders.back(), fileName));
}

void ZALRekordboxDatabase::setUserRekordboxDatabaseFileURL(const std::string& url) {
    zal::setUserCollectionFileURL(zal::rekordboxProgram(), url);
}

ZALNullableString ZALRekordboxDatabase::rekordboxBookmarkURL() {
    return zal::collectionBookmarkURL(zal::rekordboxProgram());
}

bool ZALRekordboxDatabase::rekordboxDatabaseFileExists() {
    return zal::collectionFileExists(zal::rekordboxProgram());
}

bool ZALRekordboxDatabase::hasPermissionForRekordboxFolder() {
    return zal::hasPermissionForCollectionFolder(zal::rekordboxProgram());
}

void ZALRekordboxDatabase::setRekordboxDatabasePermissionsFolder(const ZALNullableString& folder) {
    zal::setCollectionPermissionsFolder(zal::rekordboxProgram(), folder);
}

ZALNullableString ZALRekordboxDatabase::rekordboxDBPathInPermittedFolder(const std::string& folder) {
    const ZALNullableString chosen = zal::userCollectionFileURL(zal::rekordboxProgram());
    return zal::existingFile(zal::joinPaths(folder, chosen ? zal::lastPathComponent(*chosen) : fileName));
}

bool ZALRekordboxDatabase::loadRekordboxDatabaseFromFileAtURL(const ZALNullableString& url, ZALError* error) {
    return loadFileAtURL(url, error);
}

std::unique_ptr<zal::CollectionContents> ZALRekordboxDatabase::tracksOf(
    const zal::XMLDocument& document) const {
    auto contents = std::make_unique<zal::RekordboxContents>();
    std::vector<std::unique_ptr<ZALCollectionTrack>> all;
    zal::forEachTrackElement(document, [&all](const zal::XMLElement& element) {
        all.push_back(ZALRekordboxTrack::initWithXMLElement(element));
    });
    contents->setTracks(std::move(all));
    return contents;
}

void ZALRekordboxDatabase::readPlaylists(zal::CollectionContents& contents) const {
    rekordbox(contents).playlist = ZALRekordboxPlaylistFolder::initWithXMLElement(rootNode(*contents.document));
}

void ZALRekordboxDatabase::updateXMLDocument(zal::CollectionContents& contents) {
    if (const auto& playlist = rekordbox(contents).playlist) playlist->updateXMLElement();
    contents.document->setHeader();
    if (const auto root = rootOf(*contents.document)) zal::stampRoot(root);
}

ZALRekordboxPlaylistFolder* ZALRekordboxDatabase::getRootPlaylistFolder(bool create) {
    if (contents() == nullptr) return nullptr;
    auto& held = rekordbox(*contents());
    if (held.playlist || !create) return held.playlist.get();
    const zal::XMLDocument& document = *held.document;
    auto root = rootOf(document);
    if (const auto node = rootNode(document)) {
        held.playlist = ZALRekordboxPlaylistFolder::initWithXMLElement(node);
    } else if (root) {
        auto playlists = root.firstChild("PLAYLISTS");
        if (!playlists) playlists = root.appendChild("PLAYLISTS");
        held.playlist = ZALRekordboxPlaylistFolder::rekordboxPlaylistFolderWithName("ROOT");
        held.playlist->xmlElement(playlists);
    }
    return held.playlist.get();
}

std::vector<std::shared_ptr<const ZALRekordboxTrack>> ZALRekordboxDatabase::tracks() const {
    const std::shared_lock guard(lock());
    return zal::copiesOfTracks<ZALRekordboxTrack>(contents().get());
}

std::shared_ptr<const ZALRekordboxTrack> ZALRekordboxDatabase::trackForSongFileAtURL(
    const ZALNullableString& path) const {
    const std::shared_lock guard(lock());
    const auto* track = static_cast<const ZALRekordboxTrack*>(liveTrackForSongFileAtURL(path));
    return track == nullptr ? nullptr : track->copy();
}

std::shared_ptr<const ZALRekordboxPlaylistFolder> ZALRekordboxDatabase::playlist() const {
    const std::shared_lock guard(lock());
    if (contents() == nullptr) return nullptr;
    const auto& playlist = rekordbox(*contents()).playlist;
    return playlist ? playlist->copy() : nullptr;
}

std::vector<std::shared_ptr<const ZALRekordboxTrack>> ZALRekordboxDatabase::tracksOfPlaylist(
    const ZALRekordboxPlaylist& playlist) const {
    std::set<std::string> paths;
    if (playlist.tracksAsLocation()) {
        for (const std::string& location : *playlist.tracksAsLocation()) {
            if (auto path = zal::pathOfLocation(location)) paths.insert(std::move(*path));
        }
    }
    const auto isNamed = [&](const ZALRekordboxTrack& track) {
        if (playlist.tracksAsId()) return playlist.tracksAsId()->contains(track.trackId());
        return track.path() && paths.contains(*track.path());
    };
    std::vector<std::shared_ptr<const ZALRekordboxTrack>> copies;
    const std::shared_lock guard(lock());
    if (contents() == nullptr) return copies;
    for (const auto& live : contents()->tracks) {
        const auto& track = static_cast<const ZALRekordboxTrack&>(*live);
        if (isNamed(track)) copies.push_back(track.copy());
    }
    return copies;
}
