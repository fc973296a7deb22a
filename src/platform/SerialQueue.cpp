#include "platform/SerialQueue.h"

#include "platform/Thread.h"

#include <zaltag/platform/ZALHost.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace zal {

// Shared with the thread and with timers, which may outlive the queue.
struct SerialQueue::Core {
    explicit Core(std::string l) : label(std::move(l)) {}

    const std::string label;
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<void()>> blocks;
    std::thread thread;
    bool accepting = true;
    bool running = false;  // from the start of the thread to the end of its last block

    // The queue whose thread this is.
    static thread_local const Core* current;

    static bool async(const std::shared_ptr<Core>& core, std::function<void()> block);
    void run();
    void shutDown();
};

thread_local const SerialQueue::Core* SerialQueue::Core::current = nullptr;

bool SerialQueue::Core::async(const std::shared_ptr<Core>& core, std::function<void()> block) {
    const std::lock_guard lock(core->mutex);
    if (!core->accepting) return false;  // the block goes with the argument, after the lock
    core->blocks.push_back(std::move(block));
    core->changed.notify_all();
    if (core->running) return true;
    core->thread = startThread(core->label.substr(core->label.rfind('.') + 1), [core] { core->run(); });
    core->running = core->thread.joinable();  // else the next block tries again
    return true;
}

void SerialQueue::Core::run() {
    current = this;
    std::unique_lock lock(mutex);
    while (true) {
        changed.wait(lock, [this] { return !blocks.empty() || !accepting; });
        if (blocks.empty()) break;
        auto block = std::move(blocks.front());
        blocks.pop_front();
        lock.unlock();
        runGuarded(label, block);
        block = nullptr;  // what it holds may use the queue when it goes
        lock.lock();
    }
    running = false;
    changed.notify_all();
}

void SerialQueue::Core::shutDown() {
    std::thread ended;
    {
        std::unique_lock lock(mutex);
        accepting = false;
        changed.notify_all();
        if (current == this) return;
        changed.wait(lock, [this] { return !running; });
        ended = std::move(thread);
    }
    if (ended.joinable()) ended.join();
}

SerialQueue::SerialQueue(std::string label) : core_(std::make_shared<Core>(std::move(label))) {}

SerialQueue::~SerialQueue() {
    shutDown();
    if (isCurrent()) core_->thread.detach();  // it keeps what it needs
}

const std::string& SerialQueue::label() const {
    return core_->label;
}

bool SerialQueue::async(std::function<void()> block) {
    return Core::async(core_, std::move(block));
}

bool SerialQueue::isCurrent() const {
    return Core::current == core_.get();
}

void SerialQueue::shutDown() {
    core_->shutDown();
}

namespace {

// An action that either starts once or is cancelled.
class Shot {
  public:
    explicit Shot(std::function<void()> action) : action_(std::move(action)) {}

    void fire() {
        if (const auto action = take()) action();
    }
    // The action, for who comes first.
    std::function<void()> take() {
        if (taken_.exchange(true)) return nullptr;
        return std::exchange(action_, nullptr);
    }

  private:
    std::atomic<bool> taken_ = false;
    std::function<void()> action_;
};

class QueueTimer final : public ZALTimer {
  public:
    QueueTimer(std::shared_ptr<Shot> shot, std::shared_ptr<ZALTimer> timer)
        : shot_(std::move(shot)), timer_(std::move(timer)) {}
    ~QueueTimer() override { QueueTimer::cancel(); }

    void cancel() override {
        shot_->take();
        timer_->cancel();
    }

  private:
    const std::shared_ptr<Shot> shot_;
    const std::shared_ptr<ZALTimer> timer_;
};

}  // namespace

std::shared_ptr<ZALTimer> SerialQueue::after(std::chrono::duration<double> delay,
                                             std::function<void()> action) {
    auto shot = std::make_shared<Shot>(std::move(action));
    auto timer = ZALHost::shared().clock()->schedule(
        delay, [shot, core = core_] { Core::async(core, [shot] { shot->fire(); }); });
    return std::make_shared<QueueTimer>(std::move(shot), std::move(timer));
}

}  // namespace zal
