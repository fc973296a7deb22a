#pragma once

#include <zaltag/base/ZALArray.h>
#include <zaltag/base/ZALCompletion.h>
#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALText.h>
#include <zaltag/collection/ZALCollectionTrack.h>
#include <zaltag/records/ZALTagCuePoint.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

class ZALCollectionDatabase;

namespace zal {
struct CollectionChanges;
struct CollectionProgram;
class ElementReader;
}  // namespace zal

/// What a queue is doing, for those who watch it.
struct ZALCollectionProgress {
    /// What `first` can be: nothing to do, requests are waiting, the collection is loaded, the requests are
    /// applied, the collection is saved.
    static constexpr std::uint64_t idle = 0, waiting = 1, loading = 2, applying = 3, saving = 4;

    std::uint64_t first = idle;
    std::uint64_t second = 0;  ///< always 0
    std::uint64_t third = 0;   ///< always 0
    bool operator==(const ZALCollectionProgress&) const = default;
};

/// One request that waits for its batch.
struct ZALTAG_EXPORT ZALCollectionQueueItem {
    virtual ~ZALCollectionQueueItem() = default;
    std::string path;                                        ///< of the audio file
    std::chrono::system_clock::time_point modificationDate;  ///< when the request was made
    ZALArray<ZALTagCuePoint> cuePoints;
    ZALCueRequest request;
};

/// Collects requests to replace the cue points of audio files in a collection, and applies them in batches,
/// on a serial queue of its own: what the queues of all programs do alike.
///
/// A batch runs when save() asks for it, or 180 seconds after a request that found the queue idle; one that
/// failed keeps its requests and is tried again 180 seconds later. Every operation may be called from any
/// thread and returns at once. A completion is posted to the main queue exactly once, and so is progress.
class ZALTAG_EXPORT ZALCollectionQueue : public std::enable_shared_from_this<ZALCollectionQueue> {
  public:
    virtual ~ZALCollectionQueue();
    ZALCollectionQueue(const ZALCollectionQueue&) = delete;
    ZALCollectionQueue& operator=(const ZALCollectionQueue&) = delete;

    /// Asks for the cues of a track to be replaced. The cue points are sorted and, unless the request keeps
    /// their times, moved to the track's own beat grid when they are written. A later request for the same
    /// path, in any Unicode normalization, replaces this one. A null or empty path is one log line.
    virtual void setCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints, const ZALNullableString& path,
                              const ZALCueRequest& request) = 0;

    /// Loads the collection if its file changed.
    void reload(ZALCompletion completion = nullptr);
    /// Runs a batch now, in the host's mode (setCollectionSaveMode()). It begins with the file as it is: one
    /// that was away and is back, or was changed, is loaded first. Success says that the queue is done with
    /// the requests, not that the collection holds them: those for files that it does not hold are dropped,
    /// and all of them when no collection can be loaded.
    void save(ZALCompletion completion = nullptr);
    /// The same, at once: false, with the error where there is one, when the batch failed or the queue was
    /// shut down. Waits for what the queue does before; no completion, and nothing of the main queue's, is
    /// waited for.
    bool saveAndWait(ZALError* error = nullptr);
    /// Drops all waiting requests.
    void cancel();

    /// As last reported to the main queue.
    ZALCollectionProgress progress() const;

    /// Lets what was asked for so far finish, then takes nothing any more: later requests are dropped, and
    /// later completions get a failure. Requests that still wait for their batch are not written: save()
    /// first. Called at process exit for the shared queues.
    void shutDown();

  protected:
    ZALTAG_INSIDE ZALCollectionQueue(const zal::CollectionProgram& program,
                                     std::function<ZALCollectionDatabase&()> database);

    /// Puts a request in the place of an earlier one for the same file. `method` is the operation's full
    /// name, for the log.
    void enqueue(const ZALNullableString& path, std::shared_ptr<ZALCollectionQueueItem> item,
                 const char* method);

    // On the serial queue:

    /// Adds what the batch changes besides its tracks; the numbers are those of the tracks that it lists.
    ZALTAG_INSIDE virtual void listTracks(zal::ElementReader& reader,
                                          const std::vector<std::uint32_t>& numbers,
                                          zal::CollectionChanges& changes) const;
    /// After a batch that left the collection's file as the database has it, with what of its changes was not
    /// worth a save.
    ZALTAG_INSIDE virtual void finishBatch(const zal::CollectionChanges& unsaved);

    /// Ends a queue with the process, whoever else still holds it.
    class AtExit {
      public:
        explicit AtExit(std::shared_ptr<ZALCollectionQueue> queue) : queue_(std::move(queue)) {}
        ~AtExit() { queue_->shutDown(); }
        AtExit(const AtExit&) = delete;
        AtExit& operator=(const AtExit&) = delete;

      private:
        const std::shared_ptr<ZALCollectionQueue> queue_;
    };

    ZALCollectionDatabase& database() const;
    const zal::CollectionProgram& program() const { return program_; }

  private:
    struct Outcome;
    struct State;

    ZALTAG_INSIDE Outcome guarded(Outcome (ZALCollectionQueue::*operation)());
    ZALTAG_INSIDE Outcome reloadIfNeeded();
    ZALTAG_INSIDE Outcome processQueueAndSave();
    ZALTAG_INSIDE Outcome batch();
    ZALTAG_INSIDE bool applyRequests(zal::CollectionChanges& changes, bool& shouldSave);
    ZALTAG_INSIDE void dropRequests();
    ZALTAG_INSIDE void startTimerIfNeeded();
    ZALTAG_INSIDE void processTimerFired();
    ZALTAG_INSIDE void setExportStage(std::uint64_t stage);
    ZALTAG_INSIDE void updateProgress();
    ZALTAG_INSIDE void perform(Outcome (ZALCollectionQueue::*operation)(), ZALCompletion completion);
    ZALTAG_INSIDE void assertProcessingQueue(const char* function) const;

    const zal::CollectionProgram& program_;
    const std::function<ZALCollectionDatabase&()> database_;
    const std::shared_ptr<State> state_;
};
