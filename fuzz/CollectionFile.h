#pragma once

#include "FuzzSupport.h"
#include "FuzzedFile.h"
#include "support/ManualClock.h"

#include <zaltag/base/ZALError.h>
#include <zaltag/platform/ZALMainQueue.h>
#include <zaltag/platform/ZALUserDefaults.h>

#include <memory>

// What every target does that loads and saves a collection.

/// Reads all that the tracks hold, and finds each of them again.
template <typename Database>
void readEverything(const Database& database) {
    for (const auto& track : database.tracks()) {
        track->description();
        track->beatTimes();
        if (track->path() && !track->path()->empty()) {
            require(database.trackForSongFileAtURL(track->path()) != nullptr);
        }
    }
}

/// Has the queue of a database run one batch; what it wrote loads, with as many tracks.
template <typename Database, typename Queue>
void exerciseQueue(const std::shared_ptr<Database>& database, Queue& queue,
                   std::shared_ptr<Database> (*open)(const ZALNullableString& url), const std::string& path) {
    bool done = false;
    bool succeeded = false;
    queue.save([&](bool success, const ZALError*) { done = true, succeeded = success; });
    require(ZALMainQueue::shared().runUntil([&] { return done; }, std::chrono::seconds(10)));
    queue.shutDown();
    ZALMainQueue::shared().runPending();
    const auto again = open(path);
    require(!succeeded || again->trackCount() == database->trackCount());
    readEverything(*again);
}

/// Loads the file, reads it and saves it, over and over, and has `request` ask for cue points for its
/// tracks. What a save wrote loads; from the second save on, nothing changes any more. (The first one may
/// give cues another number, by which the second sorts them.)
template <typename Database, typename Queue>
void exerciseCollection(const std::uint8_t* data, std::size_t size,
                        std::shared_ptr<Database> (*open)(const ZALNullableString& url),
                        void (*choose)(const std::string& path),
                        void (*request)(Queue& queue, const ZALNullableString& path)) {
    const FuzzedFile file(data, size, "xml");
    ZALHost& host = ZALHost::shared();
    host.setUserDefaults(ZALUserDefaults::inMemory());
    const auto clock = std::make_shared<ManualClock>();
    clock->advance(2'300'000'000);  // behind the dates of most collections
    host.setClock(clock);
    choose(file.path());
    host.setRunningPrograms([] { return std::vector<std::string>(); });
    ZALData last;
    for (int round = 0; round < 3; ++round) {
        const auto database = open(file.path());
        readEverything(*database);
        const bool saved = database->save();
        if (!saved) return require(round == 0);
        const ZALData written = contentsOf(file.path());
        require(round < 2 || written == last);
        last = written;
    }
    const auto database = open(file.path());
    const auto queue = Queue::queueWithDatabase(database);
    for (const auto& track : database->tracks()) {
        request(*queue, track->path());
    }
    exerciseQueue(database, *queue, open, file.path());
}
