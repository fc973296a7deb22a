#include <zaltag/rekordbox/ZALRekordboxQueue.h>

#include "rekordbox/ImportFiles.h"
#include "rekordbox/RekordboxProgram.h"

#include <zaltag/platform/ZALClock.h>
#include <zaltag/platform/ZALHost.h>
#include <zaltag/rekordbox/ZALRekordboxDatabase.h>

#include <mutex>
#include <utility>

const std::string ZALRekordboxQueueProgressChangedNotification =
    "ZALRekordboxQueueProgressChangedNotification";

namespace {

constexpr std::int64_t memoryCueNum = -1;

bool isMemoryCue(const ZALRekordboxCuePoint& cue) {
    return cue.num() == memoryCueNum;
}

// Memory cues before hot ones: the order that the program lists them in.
std::vector<ZALRekordboxCuePoint> newCues(const ZALRekordboxQueueItem& item,
                                          const ZALArray<ZALTagCuePoint>& cuePoints) {
    std::vector<ZALRekordboxCuePoint> cues;
    if (item.writeMemoryCues) {
        for (const ZALTagCuePoint& cuePoint : cuePoints) {
            cues.push_back(ZALRekordboxCuePoint::rekordboxCueWithCuePoint(cuePoint, memoryCueNum));
        }
    }
    if (item.writeHotCues) {
        for (std::size_t i = 0; i < cuePoints.size(); ++i) {
            cues.push_back(
                ZALRekordboxCuePoint::rekordboxCueWithCuePoint(cuePoints[i], static_cast<std::int64_t>(i)));
        }
    }
    return cues;
}

}  // namespace

ZALRekordboxQueue::ZALRekordboxQueue(std::function<ZALCollectionDatabase&()> database)
    : ZALCollectionQueue(zal::rekordboxProgram(), std::move(database)) {
    reload();
}

ZALRekordboxQueue::~ZALRekordboxQueue() {
    shutDown();
}

std::shared_ptr<ZALRekordboxQueue> ZALRekordboxQueue::sharedQueue() {
    static const std::shared_ptr<ZALRekordboxQueue> shared(new ZALRekordboxQueue(
        []() -> ZALCollectionDatabase& { return *ZALRekordboxDatabase::sharedDatabase(); }));
    return shared;
}

std::shared_ptr<ZALRekordboxQueue> ZALRekordboxQueue::queueWithDatabase(
    std::shared_ptr<ZALRekordboxDatabase> database) {
    return std::shared_ptr<ZALRekordboxQueue>(
        new ZALRekordboxQueue([database]() -> ZALCollectionDatabase& { return *database; }));
}

ZALRekordboxDatabase& ZALRekordboxQueue::rekordboxDatabase() const {
    return static_cast<ZALRekordboxDatabase&>(database());
}

void ZALRekordboxQueue::setCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints,
                                     const ZALNullableString& forTrackWithPath, bool hotCues,
                                     bool memoryCues) {
    auto item = std::make_shared<ZALRekordboxQueueItem>();
    item->modificationDate = ZALHost::shared().clock()->now();
    item->cuePoints = cuePoints;
    item->writeHotCues = hotCues;
    item->writeMemoryCues = memoryCues;
    enqueue(forTrackWithPath, std::move(item),
            "-[ZALRekordboxQueue setCuePoints:forTrackWithPath:hotCues:memoryCues:]");
}

void ZALRekordboxQueue::beginBatch() {
    ZALRekordboxPlaylistFolder* root = rekordboxDatabase().getRootPlaylistFolder(true);
    playlist_ = root == nullptr ? nullptr : root->getPlaylist(ZALRekordboxCuepointsPlaylistName, true);
}

bool ZALRekordboxQueue::apply(const ZALCollectionQueueItem& item, ZALCollectionTrack& track) {
    const auto& request = static_cast<const ZALRekordboxQueueItem&>(item);
    auto& changed = static_cast<ZALRekordboxTrack&>(track);
    const auto isReplaced = [&request](const ZALRekordboxCuePoint& cue) {
        return isMemoryCue(cue) ? request.writeMemoryCues : request.writeHotCues;
    };
    const bool isChanged = changed.replaceCues(isReplaced, newCues(request, cuePointsFor(item, track)));
    changed.setForceDummyCuePoint(true);
    const bool isListed = playlist_ && playlist_->addTrackAsId(changed.trackId());
    return isListed || isChanged;
}

void ZALRekordboxQueue::finishBatch() {
    playlist_ = nullptr;
    saveSplitXmlFiles();
}

void ZALRekordboxQueue::saveSplitXmlFiles() {
    const ZALNullableString file = ZALRekordboxDatabase::rekordboxDatabaseFileURL();
    if (!file) return;
    const auto files = ZALHost::shared().fileSystem();
    for (std::uint32_t index = 0; index < zal::maximalImportFiles; ++index) {
        files->unlink(zal::getPathForSplitXml(index, *file));
    }
    const std::unique_lock guard(rekordboxDatabase().lock());
    ZALRekordboxPlaylistFolder* root = rekordboxDatabase().getRootPlaylistFolder(false);
    const auto playlist =
        root == nullptr ? nullptr : root->getPlaylist(ZALRekordboxCuepointsPlaylistName, false);
    if (!playlist || !playlist->tracksAsId()) return;
    const auto candidates =
        zal::importCandidates(*rekordboxDatabase().contents()->document, *playlist->tracksAsId());
    std::size_t begin = 0;
    std::uint32_t index = 0;
    for (const std::size_t end : zal::importGroupEnds(candidates.size())) {
        zal::saveSingleSplitXmlFile(std::span(candidates).subspan(begin, end - begin),
                                    zal::getPathForSplitXml(index, *file),
                                    zal::getPlaylistNameForSplitXml(index));
        begin = end;
        ++index;
    }
}
