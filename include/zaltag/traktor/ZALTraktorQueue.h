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

    /// All cues of a track but its grid markers are replaced; as in ZALCollectionQueue. Cue points that say
    /// nothing of pads become hot cues in their order. Otherwise each gets the pad that it says, of eight;
    /// the lowest free one where that is taken or none is said; and none where it says so or none is free. A
    /// grid marker leaves a pad that is claimed. Colours go where the collection has any.
    void setCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints, const ZALNullableString& forTrackWithPath);
    void setCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints, const ZALNullableString& path,
                      const ZALCueRequest& request) override;

  private:
    ZALTAG_INSIDE explicit ZALTraktorQueue(std::function<ZALCollectionDatabase&()> database);
    ZALTAG_INSIDE static std::shared_ptr<ZALTraktorQueue> queueOver(
        std::function<ZALCollectionDatabase&()> database);
};
