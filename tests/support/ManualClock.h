#pragma once

#include <zaltag/platform/ZALClock.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <utility>

/// A clock that stands still until a test moves it. Any thread.
class ManualClock final : public ZALClock {
  public:
    using Time = std::chrono::system_clock::time_point;

    explicit ManualClock(Time start = Time(std::chrono::seconds(1'700'000'000)))
        : state_(std::make_shared<State>()) {
        state_->now = start;
    }

    Time now() override {
        const std::lock_guard lock(state_->mutex);
        return state_->now;
    }

    std::shared_ptr<ZALTimer> schedule(std::chrono::duration<double> delay,
                                       std::function<void()> action) override {
        const std::lock_guard lock(state_->mutex);
        const Key key{state_->now + std::chrono::duration_cast<Time::duration>(delay), ++state_->count};
        state_->pending.emplace(key, std::move(action));
        return std::make_shared<Timer>(state_, key);
    }

    /// Moves the time, and runs what gets due on the way on the calling thread, each at its own time.
    void advance(double seconds) {
        std::unique_lock lock(state_->mutex);
        const Time end =
            state_->now + std::chrono::duration_cast<Time::duration>(std::chrono::duration<double>(seconds));
        while (!state_->pending.empty() && state_->pending.begin()->first.first <= end) {
            auto due = state_->pending.extract(state_->pending.begin());
            state_->now = std::max(state_->now, due.key().first);
            lock.unlock();
            due.mapped()();
            due = {};
            lock.lock();
        }
        state_->now = end;
    }

    /// How many timers are pending.
    std::size_t pending() const {
        const std::lock_guard lock(state_->mutex);
        return state_->pending.size();
    }

  private:
    using Key = std::pair<Time, int>;  // the number keeps timers of one time in order

    struct State {
        std::mutex mutex;
        Time now;
        int count = 0;
        std::map<Key, std::function<void()>> pending;
    };

    class Timer final : public ZALTimer {
      public:
        Timer(std::shared_ptr<State> state, Key key) : state_(std::move(state)), key_(key) {}
        ~Timer() override { Timer::cancel(); }
        void cancel() override {
            std::map<Key, std::function<void()>>::node_type dropped;
            const std::lock_guard lock(state_->mutex);
            dropped = state_->pending.extract(key_);
        }

      private:
        const std::shared_ptr<State> state_;
        const Key key_;
    };

    const std::shared_ptr<State> state_;
};
