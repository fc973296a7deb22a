#include <zaltag/platform/ZALClock.h>

#include "support/LogCapture.h"

#include <gmock/gmock.h>

#include <atomic>
#include <future>
#include <limits>
#include <thread>

namespace {

using namespace std::chrono_literals;

TEST(Clock, firesWhenTheDelayIsOver) {
    const LogCapture log;
    const auto clock = ZALClock::machine();
    const auto start = std::chrono::steady_clock::now();
    std::vector<std::string> fired;  // on the clock's thread until the last one
    std::promise<void> last;
    const std::shared_ptr<ZALTimer> timers[] = {
        clock->schedule(60ms, [&] { last.set_value(); }),
        clock->schedule(40ms, [&] { fired.emplace_back("40"); }),
        clock->schedule(20ms, [&] { fired.emplace_back("20"); }),
        clock->schedule(std::chrono::duration<double>(std::numeric_limits<double>::quiet_NaN()),
                        [&] { throw 1; }),
        clock->schedule(1e300s, [&] { fired.emplace_back("never"); }),
    };
    last.get_future().wait();
    EXPECT_GE(std::chrono::steady_clock::now() - start, 60ms);
    EXPECT_THAT(fired, testing::ElementsAre("20", "40"));
    EXPECT_THAT(log.lines(), testing::ElementsAre("ZALTag: the action of a timer: an exception was thrown"));
}

TEST(Clock, aCancelledTimerDoesNotStart) {
    const auto clock = ZALClock::machine();
    std::promise<void> gate;
    std::atomic<int> fired = 0;
    const auto holdUp = clock->schedule(0s, [&] { gate.get_future().wait(); });
    const auto cancelled = clock->schedule(0s, [&] { ++fired; });
    auto destroyed = clock->schedule(0s, [&] { ++fired; });
    std::this_thread::sleep_for(5ms);
    cancelled->cancel();
    cancelled->cancel();
    destroyed.reset();
    gate.set_value();
    std::promise<void> passed;
    const auto barrier = clock->schedule(1ms, [&] { passed.set_value(); });
    passed.get_future().wait();
    EXPECT_EQ(fired, 0);
}

TEST(Clock, timersComeAndGoOnManyThreads) {
    const auto clock = ZALClock::machine();
    const auto held = std::make_shared<std::atomic<int>>(0);
    const auto race = [&] {
        for (int i = 0; i < 300; ++i) {
            const auto timer = clock->schedule(std::chrono::microseconds(i % 50), [held] { ++*held; });
            if (i % 2 == 0) std::this_thread::sleep_for(30us);
        }
    };
    std::thread other(race);
    race();
    other.join();
    std::promise<void> passed;
    const auto barrier = clock->schedule(1ms, [&] { passed.set_value(); });
    passed.get_future().wait();
    EXPECT_EQ(held.use_count(), 1) << "what an action holds goes with its timer";
}

}  // namespace
