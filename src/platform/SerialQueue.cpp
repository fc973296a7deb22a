#include "platform/SerialQueue.h"

#include "platform/Shot.h"
#include "platform/Thread.h"

#include <zaltag/platform/ZALHost.h>

#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include <asio/io_context.hpp>
#include <asio/post.hpp>

namespace zal {

// Shared with the thread and with timers, which may outlive the queue.
struct SerialQueue::Core {
    explicit Core(std::string l) : label(std::move(l)) {}

    const std::string label;
    asio::io_context context{1};
    std::mutex mutex;
    std::optional<asio::executor_work_guard<asio::io_context::executor_type>> open{context.get_executor()};
    std::thread thread;
    std::mutex joining;

    bool isCurrent() { return context.get_executor().running_in_this_thread(); }
    static bool async(const std::shared_ptr<Core>& core, std::function<void()> block);
    void shutDown();
};

bool SerialQueue::Core::async(const std::shared_ptr<Core>& core, std::function<void()> block) {
    const std::lock_guard lock(core->mutex);
    if (!core->open) return false;  // the block goes with the argument, after the lock
    asio::post(core->context,
               [core = core.get(), block = std::move(block)] { runGuarded(core->label, block); });
    if (core->thread.joinable()) return true;
    // Without a thread the next block tries again.
    core->thread =
        startThread(core->label.substr(core->label.rfind('.') + 1), [core] { core->context.run(); });
    return true;
}

void SerialQueue::Core::shutDown() {
    {
        const std::lock_guard lock(mutex);
        open.reset();
    }
    if (isCurrent()) return;
    const std::lock_guard lock(joining);
    if (thread.joinable()) thread.join();
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
    return core_->isCurrent();
}

void SerialQueue::shutDown() {
    core_->shutDown();
}

namespace {

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
    auto timer = ZALHost::shared().clock()->schedule(delay, [shot, core = core_] {
        Core::async(core, [shot] {
            if (const auto taken = shot->take()) taken();
        });
    });
    return std::make_shared<QueueTimer>(std::move(shot), std::move(timer));
}

}  // namespace zal
