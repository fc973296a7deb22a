#include <zaltag/platform/ZALMainQueue.h>

#include "platform/Delay.h"
#include "platform/Thread.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

namespace {

// How often a predicate is asked that other threads may make true without posting.
constexpr std::chrono::milliseconds pollInterval{5};

void runBlock(const ZALMainQueue::Block& block) {
    zal::runGuarded("a block of the main queue", block);
}

}  // namespace

struct ZALMainQueue::State {
    std::mutex mutex;
    std::condition_variable posted;
    std::deque<Block> pending;
    std::shared_ptr<const Executor> executor;  // null: the list

    // Takes and runs the first block; false when there is none.
    bool runOne() {
        Block block;
        {
            const std::lock_guard lock(mutex);
            if (pending.empty()) return false;
            block = std::move(pending.front());
            pending.pop_front();
        }
        runBlock(block);
        return true;
    }

    std::size_t count() {
        const std::lock_guard lock(mutex);
        return pending.size();
    }
};

ZALMainQueue::ZALMainQueue() : state_(std::make_unique<State>()) {}
ZALMainQueue::~ZALMainQueue() = default;

ZALMainQueue& ZALMainQueue::shared() {
    static ZALMainQueue* const queue = new ZALMainQueue;
    return *queue;
}

void ZALMainQueue::post(Block block) {
    std::shared_ptr<const Executor> executor;
    {
        const std::lock_guard lock(state_->mutex);
        executor = state_->executor;
        if (executor == nullptr) {
            state_->pending.push_back(std::move(block));
            state_->posted.notify_all();
            return;
        }
    }
    (*executor)([block = std::move(block)] { runBlock(block); });
}

void ZALMainQueue::setExecutor(Executor executor) {
    auto next = executor ? std::make_shared<const Executor>(std::move(executor)) : nullptr;
    std::unique_lock lock(state_->mutex);
    // Until nothing is pending any more, blocks still go to the list, so that none overtakes another.
    while (next != nullptr && !state_->pending.empty()) {
        Block block = std::move(state_->pending.front());
        state_->pending.pop_front();
        lock.unlock();
        (*next)([block = std::move(block)] { runBlock(block); });
        lock.lock();
    }
    state_->executor.swap(next);
    lock.unlock();  // before the old executor goes
}

std::size_t ZALMainQueue::runPending() {
    std::size_t run = 0;
    for (const std::size_t pending = state_->count(); run < pending && state_->runOne(); ++run) {
    }
    return run;
}

bool ZALMainQueue::runUntil(const std::function<bool()>& predicate, std::chrono::duration<double> timeout) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + zal::boundedDelay(timeout);
    while (!predicate()) {
        if (Clock::now() >= deadline) return false;
        if (state_->runOne()) continue;
        std::unique_lock lock(state_->mutex);
        state_->posted.wait_for(lock, pollInterval, [this] { return !state_->pending.empty(); });
    }
    return true;
}
