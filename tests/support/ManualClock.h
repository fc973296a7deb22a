#pragma once

#include <zaltag/platform/ZALClock.h>

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

/// A clock that stands still until a test moves it. Made by std::make_shared; any thread.
class ManualClock final : public ZALClock, public std::enable_shared_from_this<ManualClock> {
  public:
    using Time = std::chrono::system_clock::time_point;

    Time now() override {
        const std::lock_guard lock(mutex_);
        return now_;
    }

    std::shared_ptr<ZALTimer> schedule(std::chrono::duration<double> delay,
                                       std::function<void()> action) override {
        const std::lock_guard lock(mutex_);
        const Key key{now_ + std::chrono::duration_cast<Time::duration>(delay), ++count_};
        pending_.emplace(key, std::move(action));
        return std::make_shared<Timer>(shared_from_this(), key);
    }

    /// Moves the time, and runs what gets due on the way on the calling thread, each at its own time.
    void advance(double seconds) {
        std::unique_lock lock(mutex_);
        const Time end =
            now_ + std::chrono::duration_cast<Time::duration>(std::chrono::duration<double>(seconds));
        while (!pending_.empty() && pending_.begin()->first.first <= end) {
            const auto due = pending_.extract(pending_.begin());
            now_ = std::max(now_, due.key().first);
            lock.unlock();
            due.mapped()();
            lock.lock();
        }
        now_ = end;
    }

    /// How many timers are pending.
    std::size_t pending() const {
        const std::lock_guard lock(mutex_);
        return pending_.size();
    }

  private:
    using Key = std::pair<Time, int>;  // the number keeps timers of one time in order

    struct Timer final : ZALTimer {
        Timer(std::shared_ptr<ManualClock> c, Key k) : clock(std::move(c)), key(k) {}
        ~Timer() override { Timer::cancel(); }
        void cancel() override {
            std::map<Key, std::function<void()>>::node_type dropped;  // goes after the lock
            const std::lock_guard lock(clock->mutex_);
            dropped = clock->pending_.extract(key);
        }
        const std::shared_ptr<ManualClock> clock;
        const Key key;
    };

    mutable std::mutex mutex_;
    Time now_{std::chrono::seconds(1'700'000'000)};
    int count_ = 0;
    std::map<Key, std::function<void()>> pending_;
};
