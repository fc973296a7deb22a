#include <zaltag/rekordbox/ZALRekordboxQueue.h>

#include "platform/FileReplacement.h"
#include "rekordbox/ImportFiles.h"
#include "rekordbox/PlaylistEdit.h"
#include "rekordbox/RekordboxProgram.h"

#include <zaltag/platform/ZALClock.h>
#include <zaltag/platform/ZALHost.h>
#include <zaltag/rekordbox/ZALRekordboxDatabase.h>

#include <algorithm>
#include <utility>

const std::string ZALRekordboxQueueProgressChangedNotification =
    "ZALRekordboxQueueProgressChangedNotification";

namespace {

ZALCueKind kindOf(bool hotCues, bool memoryCues) {
    if (hotCues) return memoryCues ? ZALCueKind::all : ZALCueKind::hot;
    return memoryCues ? ZALCueKind::memory : ZALCueKind::none;
}

}  // namespace

ZALRekordboxQueue::ZALRekordboxQueue(std::function<ZALCollectionDatabase&()> database)
    : ZALCollectionQueue(zal::rekordboxProgram(), std::move(database)) {}

ZALRekordboxQueue::~ZALRekordboxQueue() {
    shutDown();
}

std::shared_ptr<ZALRekordboxQueue> ZALRekordboxQueue::sharedQueue() {
    static const auto shared =
        queueOver([]() -> ZALCollectionDatabase& { return *ZALRekordboxDatabase::sharedDatabase(); });
    static const AtExit ended(shared);
    return shared;
}

std::shared_ptr<ZALRekordboxQueue> ZALRekordboxQueue::queueWithDatabase(
    std::shared_ptr<ZALRekordboxDatabase> database) {
    return queueOver([database]() -> ZALCollectionDatabase& { return *database; });
}

std::shared_ptr<ZALRekordboxQueue> ZALRekordboxQueue::queueOver(
    std::function<ZALCollectionDatabase&()> database) {
    const std::shared_ptr<ZALRekordboxQueue> queue(new ZALRekordboxQueue(std::move(database)));
    queue->reload();
    return queue;
}

ZALRekordboxDatabase& ZALRekordboxQueue::rekordboxDatabase() const {
    return static_cast<ZALRekordboxDatabase&>(database());
}

void ZALRekordboxQueue::setCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints,
                                     const ZALNullableString& forTrackWithPath, bool hotCues,
                                     bool memoryCues) {
    setCuePoints(cuePoints, forTrackWithPath, kindOf(hotCues, memoryCues));
}

void ZALRekordboxQueue::setCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints, const ZALNullableString& path,
                                     const ZALCueRequest& request) {
    auto item = std::make_shared<ZALRekordboxQueueItem>();
    item->modificationDate = ZALHost::shared().clock()->now();
    item->cuePoints = cuePoints;
    item->request = request;
    enqueue(path, std::move(item), "-[ZALRekordboxQueue setCuePoints:forTrackWithPath:hotCues:memoryCues:]");
}

void ZALRekordboxQueue::listTracks(zal::ElementReader& reader, const std::vector<std::uint32_t>& numbers,
                                   zal::CollectionChanges& changes) const {
    changes.playlists = zal::playlistEdit(reader, ZALRekordboxCuepointsPlaylistName, numbers);
}

void ZALRekordboxQueue::finishBatch(const zal::CollectionChanges& unsaved) {
    saveSplitXmlFiles(unsaved);
}

void ZALRekordboxQueue::saveSplitXmlFiles(const zal::CollectionChanges& unsaved) {
    const ZALNullableString file = database().fileURL();
    if (!file) return;
    const auto files = ZALHost::shared().fileSystem();
    for (std::uint32_t index = 0; index < zal::maximalImportFiles; ++index) {
        const std::string old = zal::getPathForSplitXml(index, *file);
        files->unlink(old);
        zal::FileReplacement::clearLeftOver(*files, old);
    }
    zal::ElementReader reader(rekordboxDatabase().index());
    const std::vector<zal::TrackChange> candidates = importCandidates(reader, unsaved);
    std::size_t begin = 0;
    std::uint32_t index = 0;
    for (const std::size_t end : zal::importGroupEnds(candidates.size())) {
        zal::saveSingleSplitXmlFile(reader, std::span(candidates).subspan(begin, end - begin),
                                    zal::getPathForSplitXml(index, *file),
                                    zal::getPlaylistNameForSplitXml(index));
        begin = end;
        ++index;
    }
    if (reader.hasFailed()) rekordboxDatabase().askForReload();
}

// The tracks that the playlist lists, with what is asked of them and not in the file.
std::vector<zal::TrackChange> ZALRekordboxQueue::importCandidates(
    zal::ElementReader& reader, const zal::CollectionChanges& unsaved) const {
    std::vector<zal::TrackChange> candidates;
    const std::vector<std::uint64_t> ids = zal::idsInPlaylist(reader, ZALRekordboxCuepointsPlaylistName);
    if (ids.empty()) return candidates;
    auto change = unsaved.tracks.begin();
    for (std::uint32_t number = 0; number < reader.index().tracks().size(); ++number) {
        const bool isAsked = change != unsaved.tracks.end() && change->number == number;
        const zal::TrackChange candidate = isAsked ? *change++ : zal::TrackChange{number, nullptr};
        const zal::IndexedTrack& track = reader.index().tracks()[number];
        const auto id = static_cast<std::uint64_t>(std::int64_t{track.id});
        if ((!track.hasMarks && !isAsked) || !track.isImportable) continue;
        if (std::binary_search(ids.begin(), ids.end(), id)) candidates.push_back(candidate);
    }
    return candidates;
}
