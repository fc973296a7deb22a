#include <zaltag/rekordbox/ZALRekordboxDatabase.h>

#include "base/Paths.h"
#include "collection/CollectionIndex.h"
#include "collection/Dates.h"
#include "collection/NFD.h"
#include "rekordbox/PlaylistNode.h"
#include "rekordbox/RekordboxProgram.h"
#include "rekordbox/TrackLocation.h"

#include <zaltag/platform/ZALClock.h>
#include <zaltag/platform/ZALHost.h>
#include <zaltag/rekordbox/ZALRekordboxQueue.h>

#include <algorithm>
#include <cstring>
#include <set>

const std::string ZALRekordboxDatabaseFileUserSetLocationURL = "RekordboxFileUserSetLocationURL";
const std::string ZALRekordboxFileFolderSandboxedBookmarkDataKey =
    "RekordboxFileFolderSandboxedBookmarkDataKey";

namespace {

constexpr const char* fileName = "rekordbox.xml";
constexpr const char* markName = "POSITION_MARK";

void readTrack(zal::XMLAttributes attributes, zal::TrackDraft& draft) {
    const char* const id = zal::valueOf(attributes, "TrackID");
    draft.id = ZALRekordboxTrack::idOfText(id == nullptr ? "" : id);
    draft.hasDuration = zal::valueOf(attributes, "TotalTime") != nullptr;
    if (const char* const location = zal::valueOf(attributes, "Location")) draft.place[0] = location;
}

void readChild(const char* name, zal::XMLAttributes attributes, zal::TrackDraft& draft) {
    if (std::strcmp(name, markName) != 0) return;
    draft.hasMarks = true;
    if (zal::valueOf(attributes, "Start") != nullptr) ++draft.cues;
}

zal::TrackKeys keysOf(const zal::TrackDraft& draft) {
    const ZALNullableString path = draft.place[0] ? zal::pathOfLocation(*draft.place[0]) : std::nullopt;
    return {path ? zal::canonicalDecomposition(*path) : std::string(), {}};
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
        .rootName = "DJ_PLAYLISTS",
        .trackName = "TRACK",
        .markName = markName,
        .stamp = makersStamp,
        .readTrack = readTrack,
        .readChild = readChild,
        .keysOf = keysOf,
        .pathOf = ZALRekordboxTrack::pathOfXMLElement,
        .identityOf = ZALRekordboxTrack::identityOfXMLElement,
        .trackOf = [](const XMLElement& element) -> std::unique_ptr<ZALCollectionTrack> {
            return ZALRekordboxTrack::initWithXMLElement(element);
        },
        .copyOf = [](const ZALCollectionTrack& track) -> std::shared_ptr<const ZALCollectionTrack> {
            return static_cast<const ZALRekordboxTrack&>(track).copy();
        },
    };
    return program;
}

std::vector<zal::XMLAttributeEdit> zal::makersStamp() {
    const ZALHost& host = ZALHost::shared();
    return {{"CreatedByApp", host.name()},
            {"CreatedByVersion", host.version()},
            {"CreationPlatform", "Mac"},
            {"ModificationDate", stampDate(host.clock()->now())}};
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

std::shared_ptr<ZALRekordboxDatabase> ZALRekordboxDatabase::databaseOfFileAtURL(const std::string& url) {
    std::shared_ptr<ZALRekordboxDatabase> database(new ZALRekordboxDatabase);
    database->stayWithFileAtURL(url);
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

std::vector<std::shared_ptr<const ZALRekordboxTrack>> ZALRekordboxDatabase::tracks() const {
    std::vector<std::shared_ptr<const ZALRekordboxTrack>> all;
    all.reserve(trackCount());
    forEachTrack([&all](const auto& track) { all.push_back(track); });
    return all;
}

bool ZALRekordboxDatabase::forEachTrack(
    const std::function<void(const std::shared_ptr<const ZALRekordboxTrack>& track)>& function) const {
    return ZALCollectionDatabase::forEachTrack([&function](const auto& track) {
        function(std::static_pointer_cast<const ZALRekordboxTrack>(track));
    });
}

std::shared_ptr<const ZALRekordboxTrack> ZALRekordboxDatabase::trackForSongFileAtURL(
    const ZALNullableString& path) const {
    return std::static_pointer_cast<const ZALRekordboxTrack>(track(path));
}

std::shared_ptr<const ZALRekordboxPlaylistFolder> ZALRekordboxDatabase::playlist() const {
    const auto held = index();
    if (!held || !held->frame().firstNode) return nullptr;
    zal::ElementReader reader(held);
    const auto root =
        ZALRekordboxPlaylistFolder::initWithXMLElement(reader.element(*held->frame().firstNode));
    if (reader.hasFailed()) askForReload();
    return root ? root->copy() : nullptr;
}

std::vector<std::shared_ptr<const ZALRekordboxTrack>> ZALRekordboxDatabase::tracksOfPlaylist(
    const ZALRekordboxPlaylist& playlist) const {
    std::vector<std::shared_ptr<const ZALRekordboxTrack>> copies;
    const auto held = index();
    if (!held) return copies;
    std::set<std::string> paths;
    std::vector<std::uint32_t> numbers;
    if (const auto& locations = playlist.tracksAsLocation()) {
        for (const std::string& location : *locations) {
            const auto path = zal::pathOfLocation(location);
            if (!path || !paths.insert(*path).second) continue;
            const auto found = held->withPath(zal::canonicalDecomposition(*path));
            numbers.insert(numbers.end(), found.begin(), found.end());
        }
        std::sort(numbers.begin(), numbers.end());
        numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    }
    for (std::uint32_t number = 0; playlist.tracksAsId() && number < held->tracks().size(); ++number) {
        const auto id = static_cast<std::uint64_t>(std::int64_t{held->tracks()[number].id});
        if (playlist.tracksAsId()->contains(id)) numbers.push_back(number);
    }
    zal::ElementReader reader(held);
    for (const std::uint32_t number : numbers) {
        const auto track = reader.track(number);
        if (!track) {
            askForReload();
            break;
        }
        if (playlist.tracksAsId() || paths.contains(track->path().value_or(""))) {
            copies.push_back(static_cast<const ZALRekordboxTrack&>(*track).copy());
        }
    }
    return copies;
}
