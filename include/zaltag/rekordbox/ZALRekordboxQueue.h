#pragma once

#include <zaltag/base/ZALExport.h>
#include <zaltag/collection/ZALCollectionQueue.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace zal {
struct CollectionContents;
class XMLElement;
}  // namespace zal

class ZALRekordboxDatabase;
class ZALRekordboxPlaylistFolder;

/// Posted on the main queue when progress() changed; the sender is the queue.
ZALTAG_EXPORT extern const std::string ZALRekordboxQueueProgressChangedNotification;

/// A request for the Rekordbox collection.
struct ZALTAG_EXPORT ZALRekordboxQueueItem : ZALCollectionQueueItem {
    bool writeHotCues = false;
    bool writeMemoryCues = false;
};

/// Writes cue points into the Rekordbox collection. What holds for every queue stands in ZALCollectionQueue.
///
/// A batch puts every track whose cues it set into the playlist "ZAL Cue Points", and writes that playlist's
/// tracks into import files beside the collection ("rekordbox_zalcues_001.xml" and so on, at most 5000 tracks
/// in each of up to 100 files), which Rekordbox reads cue points of known tracks from; older import files up
/// to number 100 are deleted first.
class ZALTAG_EXPORT ZALRekordboxQueue final : public ZALCollectionQueue {
  public:
    /// The one queue of this process, over the shared database.
    static std::shared_ptr<ZALRekordboxQueue> sharedQueue();
    /// Another queue, over a database of its own.
    static std::shared_ptr<ZALRekordboxQueue> queueWithDatabase(
        std::shared_ptr<ZALRekordboxDatabase> database);
    ~ZALRekordboxQueue() override;

    /// Asks for the hot cues of a track to be replaced, its memory cues, or both by the same ones. The cue
    /// points are sorted and moved to the track's own beat grid when they are written. A later request for
    /// the same path replaces this one. A null or empty path is one log line.
    void setCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints, const ZALNullableString& forTrackWithPath,
                      bool hotCues, bool memoryCues);

  private:
    explicit ZALRekordboxQueue(std::function<ZALCollectionDatabase&()> database);
    static std::shared_ptr<ZALRekordboxQueue> queueOver(std::function<ZALCollectionDatabase&()> database);
    void beginBatch() override;
    bool apply(const ZALCollectionQueueItem& item, ZALCollectionTrack& track) override;
    void finishBatch() override;

    ZALRekordboxDatabase& rekordboxDatabase() const;
    void saveSplitXmlFiles();
    std::vector<zal::XMLElement> importCandidates(std::shared_ptr<zal::CollectionContents>& contents);

    std::shared_ptr<class ZALRekordboxPlaylist> playlist_;  // of the batch that runs
};
