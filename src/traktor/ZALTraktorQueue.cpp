#include <zaltag/traktor/ZALTraktorQueue.h>

#include "traktor/TraktorProgram.h"

#include <zaltag/platform/ZALClock.h>
#include <zaltag/platform/ZALHost.h>
#include <zaltag/traktor/ZALTraktorDatabase.h>

#include <utility>

const std::string ZALTraktorQueueProgressChangedNotification = "ZALTraktorQueueProgressChangedNotification";

ZALTraktorQueue::ZALTraktorQueue(std::function<ZALCollectionDatabase&()> database)
    : ZALCollectionQueue(zal::traktorProgram(), std::move(database)) {}

ZALTraktorQueue::~ZALTraktorQueue() {
    shutDown();
}

std::shared_ptr<ZALTraktorQueue> ZALTraktorQueue::sharedQueue() {
    static const auto shared =
        queueOver([]() -> ZALCollectionDatabase& { return *ZALTraktorDatabase::sharedDatabase(); });
    static const AtExit ended(shared);
    return shared;
}

std::shared_ptr<ZALTraktorQueue> ZALTraktorQueue::queueWithDatabase(
    std::shared_ptr<ZALTraktorDatabase> database) {
    return queueOver([database]() -> ZALCollectionDatabase& { return *database; });
}

std::shared_ptr<ZALTraktorQueue> ZALTraktorQueue::queueOver(
    std::function<ZALCollectionDatabase&()> database) {
    const std::shared_ptr<ZALTraktorQueue> queue(new ZALTraktorQueue(std::move(database)));
    queue->reload();
    return queue;
}

void ZALTraktorQueue::setCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints,
                                   const ZALNullableString& forTrackWithPath) {
    setCuePoints(cuePoints, forTrackWithPath, ZALCueKind::all);
}

void ZALTraktorQueue::setCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints, const ZALNullableString& path,
                                   const ZALCueRequest& request) {
    auto item = std::make_shared<ZALTraktorQueueItem>();
    item->modificationDate = ZALHost::shared().clock()->now();
    item->cuePoints = cuePoints;
    item->request = request;
    enqueue(path, std::move(item), "-[ZALTraktorQueue setCuePoints:forTrackWithPath:]");
}
