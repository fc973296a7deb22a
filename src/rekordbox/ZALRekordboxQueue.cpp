#include <zaltag/rekordbox/ZALRekordboxQueue.h>

#include "platform/FileReplacement.h"
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
        const std::string old = zal::getPathForSplitXml(index, *file);
        files->unlink(old);
        zal::FileReplacement::clearLeftOver(*files, old);
    }
    // The documents are made under the lock, but written without it: lookups do not wait for the disk.
    ZALRekordboxDatabase& database = rekordboxDatabase();
    std::shared_ptr<zal::CollectionContents> contents;
    const std::vector<zal::XMLElement> candidates = importCandidates(contents);
    std::size_t begin = 0;
    std::uint32_t index = 0;
    for (const std::size_t end : zal::importGroupEnds(candidates.size())) {
        std::unique_lock guard(database.lock());
        const auto document = zal::importDocument(std::span(candidates).subspan(begin, end - begin),
                                                  zal::getPlaylistNameForSplitXml(index));
        guard.unlock();
        zal::saveSingleSplitXmlFile(*document, zal::getPathForSplitXml(index, *file));
        begin = end;
        ++index;
    }
}

// The elements of the tracks that the playlist lists, brought up to date; `contents` keeps them.
std::vector<zal::XMLElement> ZALRekordboxQueue::importCandidates(
    std::shared_ptr<zal::CollectionContents>& contents) {
    ZALRekordboxDatabase& database = rekordboxDatabase();
    const std::unique_lock guard(database.lock());
    contents = database.contents();
    ZALRekordboxPlaylistFolder* root = database.getRootPlaylistFolder(false);
    const auto playlist =
        root == nullptr ? nullptr : root->getPlaylist(ZALRekordboxCuepointsPlaylistName, false);
    std::vector<zal::XMLElement> candidates;
    if (!playlist || !playlist->tracksAsId()) return candidates;
    for (const auto& track : contents->tracks) {
        auto& listed = static_cast<ZALRekordboxTrack&>(*track);
        if (!playlist->tracksAsId()->contains(listed.trackId())) continue;
        const zal::XMLElement element = listed.xmlElement();
        if (zal::isImportCandidate(element)) candidates.push_back(element);
    }
    return candidates;
}
