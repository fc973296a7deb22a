#pragma once

#include "FuzzSupport.h"
#include "FuzzedFile.h"

#include <zaltag/platform/ZALClock.h>
#include <zaltag/platform/ZALUserDefaults.h>

#include <memory>

// What every target does that loads and saves a collection.

/// User defaults with one text for every key.
class FixedDefaults final : public ZALUserDefaults {
  public:
    explicit FixedDefaults(std::string text) : text_(std::move(text)) {}
    ZALNullableString stringForKey(const std::string&) override { return text_; }
    ZALNullableData dataForKey(const std::string&) override { return std::nullopt; }
    bool hasValueForKey(const std::string&) override { return true; }
    void setString(const std::string&, const std::string&) override {}
    void setData(const std::string&, const ZALNullableData&) override {}
    void removeKey(const std::string&) override {}
    void synchronize() override {}

  private:
    const std::string text_;
};

/// A clock that stands still.
class FixedClock final : public ZALClock {
  public:
    std::chrono::system_clock::time_point now() override { return {}; }
    std::shared_ptr<ZALTimer> schedule(std::chrono::duration<double>, std::function<void()>) override {
        return nullptr;
    }
};

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

/// Loads the file, reads it and saves it, over and over. What a save wrote loads; from the second save on,
/// nothing changes any more. (The first one may give cues another number, by which the second sorts them.)
template <typename Database>
void exerciseCollection(const std::uint8_t* data, std::size_t size,
                        std::shared_ptr<Database> (*open)(const ZALNullableString& url)) {
    const FuzzedFile file(data, size, "xml");
    ZALHost& host = ZALHost::shared();
    host.setUserDefaults(std::make_shared<FixedDefaults>(file.path()));
    host.setClock(std::make_shared<FixedClock>());
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
}
