#pragma once

#include <zaltag/base/ZALExport.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>

/// The way to the host's main thread, for completions and progress. The library has no main thread of its
/// own: the host gives an executor that takes callables to its event loop, or drains the queue itself.
///
/// Blocks run in the order they were posted in, one at a time. One that throws costs a log line. What is
/// pending at process exit is not run. Every operation may be called from any thread.
class ZALTAG_EXPORT ZALMainQueue {
  public:
    using Block = std::function<void()>;
    /// Takes a block to the main thread and runs it there once, in order; called from any thread, and must
    /// not throw.
    using Executor = std::function<void(Block block)>;

    /// The one main queue of this process. It is never destroyed.
    static ZALMainQueue& shared();

    void post(Block block);

    /// Hands every block to the executor from now on, what is pending first. An empty function restores the
    /// queue's own list; what the executor has by then stays with it.
    void setExecutor(Executor executor);

    /// Runs what is pending now, on the calling thread, and returns how many blocks that were; 0 while there
    /// is an executor. Blocks posted meanwhile are left to the next call.
    std::size_t runPending();

    /// Runs blocks as they come until the predicate, asked after each of them and every few milliseconds,
    /// gives true. False when it has not after the timeout, in seconds of real time. With an executor, only
    /// waits.
    bool runUntil(const std::function<bool()>& predicate, std::chrono::duration<double> timeout);

    ZALMainQueue(const ZALMainQueue&) = delete;
    ZALMainQueue& operator=(const ZALMainQueue&) = delete;

  private:
    ZALMainQueue();
    ~ZALMainQueue();

    struct State;
    const std::unique_ptr<State> state_;
};
