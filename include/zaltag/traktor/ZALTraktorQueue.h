#pragma once

#include <zaltag/base/ZALExport.h>
#include <zaltag/collection/ZALCollectionQueue.h>

#include <memory>
#include <string>

class ZALTraktorDatabase;

/// Posted on the main queue when progress() changed; the sender is the queue.
ZALTAG_EXPORT extern const std::string ZALTraktorQueueProgressChangedNotification;

/// A request for the Traktor collection.
struct ZALTAG_EXPORT ZALTraktorQueueItem : ZALCollectionQueueItem {};

/// Writes cue points into the Traktor collection. What holds for every queue stands in ZALCollectionQueue.
///
/// While Traktor runs, a batch fails with the error traktorRunning and keeps its requests. A request for a
/// track whose entry has a later date than the request, or none that can be read, is dropped with a log line.
class ZALTAG_EXPORT ZALTraktorQueue final : public ZALCollectionQueue {
  public:
    /// The one queue of this process, over the shared database.
    static std::shared_ptr<ZALTraktorQueue> sharedQueue();
    /// Another queue, over a database of its own.
    static std::shared_ptr<ZALTraktorQueue> queueWithDatabase(std::shared_ptr<ZALTraktorDatabase> database);
    ~ZALTraktorQueue() override;

    /// Asks for all cues of a track but its grid markers to be replaced by hot cues. The cue points are
    /// sorted and moved to the track's own beat grid when they are written. A later request for the same path
    /// replaces this one. A null or empty path is one log line.
    void setCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints, const ZALNullableString& forTrackWithPath);

  private:
    explicit ZALTraktorQueue(std::function<ZALCollectionDatabase&()> database);
    static std::shared_ptr<ZALTraktorQueue> queueOver(std::function<ZALCollectionDatabase&()> database);
    bool apply(const ZALCollectionQueueItem& item, ZALCollectionTrack& track) override;
};
