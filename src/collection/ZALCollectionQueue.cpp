#include <zaltag/collection/ZALCollectionQueue.h>

#include "base/Assert.h"
#include "base/Paths.h"
#include "collection/CollectionWriter.h"
#include "collection/NFD.h"
#include "collection/PackedRequest.h"
#include "collection/TrackEdit.h"
#include "platform/Log.h"
#include "platform/SerialQueue.h"

#include <zaltag/collection/ZALCollectionDatabase.h>
#include <zaltag/collection/ZALCollectionTrack.h>
#include <zaltag/platform/ZALHost.h>
#include <zaltag/platform/ZALMainQueue.h>
#include <zaltag/platform/ZALNotificationCenter.h>

#include <algorithm>
#include <exception>
#include <future>
#include <utility>

namespace {

constexpr std::chrono::duration<double> flushDelay{180.0};

using Stage = ZALCollectionProgress;

// What the main queue last heard; it may outlive the queue. A main queue that is behind hears the last of it.
struct Progress {
    std::mutex lock;
    ZALCollectionProgress shown;
    ZALCollectionProgress latest;
    bool isPosted = false;

    // True when the main queue has to be told.
    bool change(const ZALCollectionProgress& progress) {
        const std::lock_guard guard(lock);
        latest = progress;
        return !std::exchange(isPosted, true);
    }
    // On the main queue.
    void show(const char* notification, const void* sender) {
        {
            const std::lock_guard guard(lock);
            isPosted = false;
            if (shown == latest) return;
            shown = latest;
        }
        ZALNotificationCenter::shared().enqueueNotification(notification, sender);
    }
};

}  // namespace

struct ZALCollectionQueue::Outcome {
    bool success = true;
    std::optional<ZALError> error;
    bool isDone() const { return success && !error; }
};

struct ZALCollectionQueue::State {
    explicit State(const char* label) : processingQueue(std::make_unique<zal::SerialQueue>(label)) {}

    // All but the first two belong to the serial queue.
    const std::unique_ptr<zal::SerialQueue> processingQueue;
    const std::shared_ptr<Progress> progress = std::make_shared<Progress>();
    zal::PackedRequests itemQueue;
    std::shared_ptr<ZALTimer> processTimer;
    std::uint64_t exportStage = Stage::idle;
};

ZALCollectionQueue::ZALCollectionQueue(const zal::CollectionProgram& program,
                                       std::function<ZALCollectionDatabase&()> database)
    : program_(program),
      database_(std::move(database)),
      state_(std::make_shared<State>(program.queueLabel)) {}

ZALCollectionQueue::~ZALCollectionQueue() {
    shutDown();
}

void ZALCollectionQueue::shutDown() {
    state_->processingQueue->shutDown();
}

ZALCollectionDatabase& ZALCollectionQueue::database() const {
    return database_();
}

ZALCollectionProgress ZALCollectionQueue::progress() const {
    const std::lock_guard guard(state_->progress->lock);
    return state_->progress->shown;
}

void ZALCollectionQueue::assertProcessingQueue(const char* function) const {
    if (state_->processingQueue == nullptr) {
        zal::assertionFailed("No processing queue", function, program_.queueClass, __LINE__);
    }
}

void ZALCollectionQueue::enqueue(const ZALNullableString& path, std::shared_ptr<ZALCollectionQueueItem> item,
                                 const char* method) {
    assertProcessingQueue(method);
    if (!path || path->empty()) return zal::logf("{}: discarded request for nil path", method);
    item->path = *path;
    zal::PackedRequests made;
    const std::string key = zal::canonicalDecomposition(*path);
    made.emplace(key, zal::PackedRequest(*item, key));
    const auto entry = std::make_shared<zal::PackedRequests::node_type>(made.extract(made.begin()));
    // A block keeps the queue until it has run.
    state_->processingQueue->async([this, self = shared_from_this(), entry] {
        state_->itemQueue.erase(entry->key());
        state_->itemQueue.insert(std::move(*entry));
        updateProgress();
        startTimerIfNeeded();
    });
}

// Runs an operation on the serial queue, and its completion on the main queue, whatever happens. The main
// queue takes the completion over, so that what it holds is not let go of here.
void ZALCollectionQueue::perform(Outcome (ZALCollectionQueue::*operation)(), ZALCompletion completion) {
    const auto held = std::make_shared<ZALCompletion>(std::move(completion));
    const auto complete = [held](const Outcome& outcome) {
        if (!*held) return;
        ZALMainQueue::shared().post([completion = std::move(*held), outcome] {
            completion(outcome.success, outcome.error ? &*outcome.error : nullptr);
        });
    };
    const bool taken = state_->processingQueue->async(
        [this, self = shared_from_this(), operation, complete] { complete(guarded(operation)); });
    if (!taken) complete({false, std::nullopt});
}

// Memory may run out; the requests are kept then.
ZALCollectionQueue::Outcome ZALCollectionQueue::guarded(Outcome (ZALCollectionQueue::*operation)()) {
    Outcome outcome;
    try {
        outcome = (this->*operation)();
    } catch (const std::exception& exception) {
        zal::logf("-[{}] {}", program_.queueClass, exception.what());
        outcome = {false, std::nullopt};
    }
    setExportStage(Stage::idle);
    return outcome;
}

void ZALCollectionQueue::reload(ZALCompletion completion) {
    assertProcessingQueue("reload:");
    perform(&ZALCollectionQueue::reloadIfNeeded, std::move(completion));
}

void ZALCollectionQueue::save(ZALCompletion completion) {
    assertProcessingQueue("save:");
    perform(&ZALCollectionQueue::processQueueAndSave, std::move(completion));
}

bool ZALCollectionQueue::saveAndWait(ZALError* error) {
    assertProcessingQueue("saveAndWait:");
    Outcome outcome{false, std::nullopt};
    std::promise<void> done;
    const auto run = [&] {
        outcome = guarded(&ZALCollectionQueue::processQueueAndSave);
        done.set_value();
    };
    if (state_->processingQueue->isCurrent()) {
        run();
    } else if (state_->processingQueue->async(run)) {
        done.get_future().wait();
    }
    if (error != nullptr && outcome.error) *error = *outcome.error;
    return outcome.isDone();
}

void ZALCollectionQueue::cancel() {
    assertProcessingQueue("cancel");
    state_->processingQueue->async([this, self = shared_from_this()] {
        state_->processTimer = nullptr;
        dropRequests();
    });
}

ZALCollectionQueue::Outcome ZALCollectionQueue::reloadIfNeeded() {
    Outcome outcome;
    if (!database().needsReloading()) return outcome;
    setExportStage(Stage::loading);
    ZALError error;
    outcome.success = database().reload(&error);
    if (!error.domain.empty()) outcome.error = error;
    setExportStage(Stage::idle);
    return outcome;
}

void ZALCollectionQueue::startTimerIfNeeded() {
    if (state_->processTimer || state_->itemQueue.empty()) return;
    state_->processTimer = state_->processingQueue->after(flushDelay, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->processTimerFired();
    });
}

void ZALCollectionQueue::processTimerFired() {
    assertProcessingQueue("processTimerFired:");
    state_->processTimer = nullptr;
    if (!guarded(&ZALCollectionQueue::processQueueAndSave).isDone()) startTimerIfNeeded();
}

ZALCollectionQueue::Outcome ZALCollectionQueue::processQueueAndSave() {
    return state_->itemQueue.empty() ? Outcome() : batch();
}

ZALCollectionQueue::Outcome ZALCollectionQueue::batch() {
    Outcome outcome;
    ZALError error;
    const auto failure = [&error](bool success) {
        return Outcome{success, error.domain.empty() ? std::nullopt : std::optional(error)};
    };
    if (!database().canExport(&error) || !error.domain.empty()) return failure(false);
    const bool wasLoaded = database().isLoaded();
    if (database().needsReloading()) {
        setExportStage(Stage::loading);
        const bool reloaded = database().reload(&error);
        if (wasLoaded && (!reloaded || !error.domain.empty())) {
            zal::logFailure(fmt::format("-[{} processQueueAndSave:] {}: {}", program_.queueClass,
                                        program_.reloadFailure, zal::describeError(error)));
            return failure(reloaded);
        }
    }
    if (!database().isLoaded()) {
        dropRequests();
        return outcome;
    }
    setExportStage(Stage::applying);
    zal::CollectionChanges changes;
    bool shouldSave = false;
    if (!applyRequests(changes, shouldSave)) {
        database().askForReload();
        return failure(database().failSave("the file was changed since it was read", &error));
    }
    setExportStage(Stage::saving);
    if (shouldSave && (!database().saveChanges(changes, &error) || !error.domain.empty()))
        return failure(false);
    const bool isQuiet = changes.mode == ZALCollectionSaveMode::changedTracks && !shouldSave;
    if (shouldSave) {
        changes.tracks.clear();
        dropRequests();  // they are written; their memory is wanted for what follows
    }
    if (!isQuiet) finishBatch(changes);
    dropRequests();
    return outcome;
}

// What the requests change, by the collection as it is loaded. False when its file was changed under it.
bool ZALCollectionQueue::applyRequests(zal::CollectionChanges& changes, bool& shouldSave) {
    changes.index = database().index();
    changes.mode = ZALHost::shared().collectionSaveMode();
    const bool isEvery = changes.mode == ZALCollectionSaveMode::everyTrackWithCues;
    zal::ElementReader reader(changes.index);
    std::vector<std::uint32_t> listed;
    listed.reserve(state_->itemQueue.size());
    changes.tracks.reserve(state_->itemQueue.size());
    for (const auto& request : state_->itemQueue) {
        std::uint32_t number = 0;
        const auto track = reader.find(request.first, number);
        if (!track) continue;
        const ZALCollectionQueueItem item = request.second.item(request.first);
        if (!track->whyLeftOut(item.modificationDate, item.request).empty()) {
            zal::logf("Skipping track '{}' (modified)", zal::lastPathComponent(item.path));
            continue;
        }
        const bool isChanged = isEvery ? track->replaceCuePoints(item.cuePoints, item.request)
                                       : track->editFor(item.cuePoints, item.request, nullptr).isChanged;
        shouldSave = shouldSave || isChanged;
        if (isChanged || (isEvery && track->xmlNeedsUpdate())) changes.tracks.push_back({number, &request});
        if (isChanged || isEvery) listed.push_back(number);
    }
    std::sort(changes.tracks.begin(), changes.tracks.end(),
              [](const auto& one, const auto& other) { return one.number < other.number; });
    listTracks(reader, listed, changes);
    shouldSave = shouldSave || changes.playlists.has_value();
    return !reader.hasFailed();
}

void ZALCollectionQueue::listTracks(zal::ElementReader&, const std::vector<std::uint32_t>&,
                                    zal::CollectionChanges&) const {}

void ZALCollectionQueue::finishBatch(const zal::CollectionChanges&) {}

void ZALCollectionQueue::dropRequests() {
    state_->itemQueue.clear();
    updateProgress();
}

void ZALCollectionQueue::setExportStage(std::uint64_t stage) {
    if (state_->exportStage == stage) return;
    state_->exportStage = stage;
    updateProgress();
}

void ZALCollectionQueue::updateProgress() {
    const std::uint64_t shown = state_->exportStage == Stage::idle && !state_->itemQueue.empty()
                                    ? Stage::waiting
                                    : state_->exportStage;
    if (!state_->progress->change({shown, 0, 0})) return;
    ZALMainQueue::shared().post([progress = state_->progress, notification = program_.progressNotification,
                                 sender = this] { progress->show(notification, sender); });
}
