#pragma once

#include <zaltag/base/ZALExport.h>

#include <chrono>
#include <functional>
#include <memory>

/// An action that is going to happen. Destroying the timer cancels it.
class ZALTAG_EXPORT ZALTimer {
  public:
    virtual ~ZALTimer();

    /// After this returned the action does not start any more; one that has started goes on. Any thread, the
    /// action itself too; a second call does nothing.
    virtual void cancel() = 0;
};

/// What time it is, and what happens later. Every operation may be called from any thread.
class ZALTAG_EXPORT ZALClock {
  public:
    virtual ~ZALClock();

    virtual std::chrono::system_clock::time_point now() = 0;
    /// Runs the action once, `delay` seconds from now (below zero and NaN: at once), on a thread of the
    /// clock: it should be short, and must not throw. Never null; the action is cancelled with the timer, so
    /// keep it.
    virtual std::shared_ptr<ZALTimer> schedule(std::chrono::duration<double> delay,
                                               std::function<void()> action) = 0;

    /// The machine's own. All actions run on one thread, which the first schedule() starts; setting the
    /// system's time does not move them. At process exit the running action is waited for, and pending ones
    /// are dropped.
    static std::shared_ptr<ZALClock> machine();
};
