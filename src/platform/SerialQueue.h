#pragma once

#include <zaltag/platform/ZALClock.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace zal {

/// Runs blocks one after the other, in the order they were submitted in, on a thread of its own, which the
/// first block starts. A block that throws costs a log line. Every operation may be called from any thread,
/// from a block too.
class SerialQueue {
  public:
    /// The label is in reverse domain form; what stands after its last "." names the thread.
    explicit SerialQueue(std::string label);
    /// Shuts the queue down. On the queue's own thread the rest of the submitted blocks runs after that.
    ~SerialQueue();
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;

    const std::string& label() const;

    /// Submits a block; false after shutDown(), when it is dropped.
    bool async(std::function<void()> block);
    /// True when the calling thread is the queue's.
    bool isCurrent() const;

    /// Runs the action on the queue, once, some seconds from now by the host's clock. Never null; destroying
    /// the timer cancels it. Cancelled on the queue, the action does not start any more, even when the clock
    /// has handed it over already; cancelled elsewhere, it may just have started. A timer that is due after
    /// shutDown() does nothing.
    std::shared_ptr<ZALTimer> after(std::chrono::duration<double> delay, std::function<void()> action);

    /// Refuses later blocks, lets the thread run every block that was submitted, so that every completion
    /// arrives, and returns when it has ended. Called on the queue's own thread it only refuses later blocks.
    /// A second call waits for the same and does no more. Fit for static destructors.
    void shutDown();

  private:
    struct Core;
    const std::shared_ptr<Core> core_;
};

}  // namespace zal
