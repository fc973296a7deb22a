#include <zaltag/platform/ZALClock.h>

#include "support/LogCapture.h"

#include <gmock/gmock.h>

#include <atomic>
#include <future>
#include <limits>
#include <thread>

namespace {

using namespace std::chrono_literals;
using Seconds = std::chrono::duration<double>;

TEST(Clock, timersFireInTheOrderOfTheirTimesUnlessCancelled) {
    const LogCapture log;
    const auto clock = ZALClock::machine();
    const auto cancelled = std::make_shared<std::atomic<int>>(0);
    std::vector<int> fired;  // on the clock's thread until the last one
    std::promise<void> gate, last;
    const std::shared_ptr<ZALTimer> timers[] = {
        clock->schedule(0s, [&] { gate.get_future().wait(); }),
        clock->schedule(40ms, [&] { last.set_value(); }),
        clock->schedule(20ms, [&] { fired.push_back(20); }),
        clock->schedule(10ms, [&] { fired.push_back(10); }),
        clock->schedule(Seconds(1e300), [&] { fired.push_back(0); }),
        clock->schedule(Seconds(std::numeric_limits<double>::quiet_NaN()), [] { throw 1; })};
    const auto comeAndGo = [&] {
        for (int i = 0; i < 300; ++i) {
            const auto timer = clock->schedule(0s, [cancelled] { ++*cancelled; });
            if (i % 2 == 0) timer->cancel();
        }
    };
    std::thread other(comeAndGo);
    comeAndGo();
    other.join();
    gate.set_value();
    last.get_future().wait();
    EXPECT_THAT(fired, testing::ElementsAre(10, 20));
    EXPECT_EQ(*cancelled, 0);
    EXPECT_EQ(cancelled.use_count(), 1) << "what a cancelled timer holds is gone";
    EXPECT_THAT(log.lines(), testing::ElementsAre("ZALTag: the action of a timer: an exception was thrown"));
}

}  // namespace
