#pragma once

#include "support/AudioFixtures.h"
#include "support/HostGuard.h"
#include "support/ManualClock.h"

#include <zaltag/collection/ZALCollectionQueue.h>
#include <zaltag/platform/ZALUserDefaults.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

/// A host in which a collection can be used: settings in memory, a clock that stands still, no environment
/// and no other programs, "Host" 1.2 as its name.
struct QuietHost {
    QuietHost();
    HostGuard host;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
};

/// The same with a folder of its own as the documents folder.
struct CollectionHost : QuietHost {
    CollectionHost();

    /// Writes a file of this folder and returns its path.
    std::string file(const std::string& name, const std::string& content) const;

    std::string root() const { return folder.path().string(); }

    TemporaryFolder folder;
};

std::string contentOf(const std::string& path);
/// A folder as Traktor's collection names it.
std::string traktorFolder(const std::string& path);
/// How often a text stands in another one.
std::size_t countOf(const std::string& text, const std::string& part);

/// What a completion was given.
struct Completed {
    bool success = false;
    std::optional<ZALError> error;
    bool operator==(bool expected) const { return success == expected; }
};
/// Runs an operation of a queue that takes a completion, and waits for it on the main queue.
Completed completed(const std::function<void(ZALCompletion)>& operation);
inline Completed saved(ZALCollectionQueue& queue) {
    return completed([&queue](ZALCompletion completion) { queue.save(std::move(completion)); });
}
inline Completed reloaded(ZALCollectionQueue& queue) {
    return completed([&queue](ZALCompletion completion) { queue.reload(std::move(completion)); });
}
