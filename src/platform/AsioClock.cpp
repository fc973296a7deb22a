#include "platform/Delay.h"
#include "platform/Shot.h"
#include "platform/Thread.h"

#include <zaltag/platform/ZALClock.h>

#include <mutex>
#include <thread>
#include <utility>

#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>

ZALTimer::~ZALTimer() = default;
ZALClock::~ZALClock() = default;

namespace {

using Seconds = std::chrono::duration<double>;

// The thread that all timers fire on.
class TimerThread {
  public:
    asio::io_context& context() { return context_; }

    void startOnce() {
        const std::lock_guard lock(mutex_);
        if (stopped_ || thread_.joinable()) return;
        thread_ = zal::startThread("ZALTagTimers", [this] { context_.run(); });
    }

    // The running action ends; no other starts any more.
    void stop() {
        std::thread ended;
        {
            const std::lock_guard lock(mutex_);
            stopped_ = true;
            ended = std::exchange(thread_, {});
        }
        context_.stop();
        if (ended.get_id() == std::this_thread::get_id()) {
            ended.detach();  // a timer's action ends the process
        } else if (ended.joinable()) {
            ended.join();
        }
    }

  private:
    asio::io_context context_{1};
    const asio::executor_work_guard<asio::io_context::executor_type> work_{context_.get_executor()};
    std::mutex mutex_;
    std::thread thread_;
    bool stopped_ = false;
};

// One scheduled action. Asio's timer belongs to the timer thread once it waits; whether the action starts is
// decided by who takes it first.
class Alarm : public std::enable_shared_from_this<Alarm> {
  public:
    Alarm(asio::io_context& context, std::function<void()> action)
        : timer_(context), shot_(std::move(action)) {}

    void start(Seconds delay) {
        timer_.expires_after(zal::boundedDelay(delay));
        timer_.async_wait([self = shared_from_this()](const std::error_code& error) {
            const auto action = error ? nullptr : self->shot_.take();
            if (action) zal::runGuarded("the action of a timer", action);
        });
    }

    void cancel(asio::io_context& context) {
        if (shot_.take() == nullptr) return;
        asio::post(context, [self = shared_from_this()] { self->timer_.cancel(); });
    }

  private:
    asio::steady_timer timer_;
    zal::Shot shot_;
};

class AsioTimer final : public ZALTimer {
  public:
    AsioTimer(TimerThread& thread, std::shared_ptr<Alarm> alarm)
        : thread_(thread), alarm_(std::move(alarm)) {}
    ~AsioTimer() override { AsioTimer::cancel(); }

    void cancel() override { alarm_->cancel(thread_.context()); }

  private:
    TimerThread& thread_;  // never destroyed
    const std::shared_ptr<Alarm> alarm_;
};

class AsioClock final : public ZALClock {
  public:
    std::chrono::system_clock::time_point now() override { return std::chrono::system_clock::now(); }

    std::shared_ptr<ZALTimer> schedule(Seconds delay, std::function<void()> action) override {
        thread_.startOnce();
        auto alarm = std::make_shared<Alarm>(thread_.context(), std::move(action));
        alarm->start(delay);
        return std::make_shared<AsioTimer>(thread_, std::move(alarm));
    }

    void stop() { thread_.stop(); }

  private:
    TimerThread thread_;
};

}  // namespace

std::shared_ptr<ZALClock> ZALClock::machine() {
    // Never destroyed, since queues that end later still cancel timers; its thread ends at process exit.
    static auto* const clock = new std::shared_ptr<AsioClock>(std::make_shared<AsioClock>());
    static const std::unique_ptr<AsioClock, void (*)(AsioClock*)> end(clock->get(),
                                                                      [](AsioClock* c) { c->stop(); });
    return *clock;
}
