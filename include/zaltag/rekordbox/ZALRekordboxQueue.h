#pragma once

#include <zaltag/base/ZALExport.h>
#include <zaltag/collection/ZALCollectionQueue.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace zal {
struct TrackChange;
}  // namespace zal

class ZALRekordboxDatabase;

/// Posted on the main queue when progress() changed; the sender is the queue.
ZALTAG_EXPORT extern const std::string ZALRekordboxQueueProgressChangedNotification;

/// A request for the Rekordbox collection.
struct ZALTAG_EXPORT ZALRekordboxQueueItem : ZALCollectionQueueItem {
    bool writeHotCues() const { return request.kind == ZALCueKind::hot || request.kind == ZALCueKind::all; }
    bool writeMemoryCues() const {
        return request.kind == ZALCueKind::memory || request.kind == ZALCueKind::all;
    }
};

/// Writes cue points into the Rekordbox collection. What holds for every queue stands in ZALCollectionQueue.
///
/// A batch puts every track whose cues it set, in the mode `changedTracks` every one that it changed, into
/// the playlist "ZAL Cue Points", and writes that playlist's tracks into import files beside the collection
/// ("rekordbox_zalcues_001.xml" and so on, at most 5000 tracks in each of up to 100 files), which Rekordbox
/// reads cue points of known tracks from; older import files up to number 100 are deleted first. In
/// `changedTracks` a batch that changes no track writes nothing at all.
class ZALTAG_EXPORT ZALRekordboxQueue final : public ZALCollectionQueue {
  public:
    /// The one queue of this process, over the shared database.
    static std::shared_ptr<ZALRekordboxQueue> sharedQueue();
    /// Another queue, over a database of its own.
    static std::shared_ptr<ZALRekordboxQueue> queueWithDatabase(
        std::shared_ptr<ZALRekordboxDatabase> database);
    ~ZALRekordboxQueue() override;

    /// The hot cues of a track are replaced, its memory cues, or both by the same ones; as in
    /// ZALCollectionQueue. Cue points that say nothing of pads become hot cues in their order. Otherwise each
    /// gets the pad that it says, of sixteen; the lowest free one of eight where that is taken or none is
    /// said; what says that it is on none, finds none free, or is a load marker becomes a memory cue.
    void setCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints, const ZALNullableString& forTrackWithPath,
                      bool hotCues, bool memoryCues);
    void setCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints, const ZALNullableString& path,
                      const ZALCueRequest& request) override;

  private:
    ZALTAG_INSIDE explicit ZALRekordboxQueue(std::function<ZALCollectionDatabase&()> database);
    ZALTAG_INSIDE static std::shared_ptr<ZALRekordboxQueue> queueOver(
        std::function<ZALCollectionDatabase&()> database);
    ZALTAG_INSIDE void listTracks(zal::ElementReader& reader, const std::vector<std::uint32_t>& numbers,
                                  zal::CollectionChanges& changes) const override;
    ZALTAG_INSIDE void finishBatch(const zal::CollectionChanges& unsaved) override;

    ZALTAG_INSIDE ZALRekordboxDatabase& rekordboxDatabase() const;
    ZALTAG_INSIDE void saveSplitXmlFiles(const zal::CollectionChanges& unsaved);
    ZALTAG_INSIDE std::vector<zal::TrackChange> importCandidates(zal::ElementReader& reader,
                                                                 const zal::CollectionChanges& unsaved) const;
};
