#include "platform/SerialQueue.h"

#include "support/HostGuard.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <thread>

#include <pthread.h>

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

TEST(SerialQueue, runsBlocksInOrderOnItsOwnThread) {
    std::vector<int> seen;  // touched on the queue only
    char name[16] = {};
    {
        zal::SerialQueue queue("com.quorvantis.RekordboxQueue");
        const auto submit = [&](int first) {
            for (int i = 0; i < 500; ++i) {
                queue.async([&seen, number = first + i] { seen.push_back(number); });
            }
        };
        std::thread other([&] { submit(1000); });
        submit(0);
        other.join();
        queue.async([&] { queue.isCurrent() && ::pthread_getname_np(::pthread_self(), name, sizeof name); });
        EXPECT_FALSE(queue.isCurrent());
    }
    EXPECT_STREQ(name, "RekordboxQueue");
    std::stable_partition(seen.begin(), seen.end(), [](int number) { return number < 1000; });
    EXPECT_TRUE(seen.size() == 1000 && std::ranges::is_sorted(seen));
}

TEST(SerialQueue, shuttingDownRunsWhatWasSubmittedAndNoMore) {
    const LogCapture log;
    zal::SerialQueue queue("com.quorvantis.Test");
    std::promise<void> gate;
    std::vector<int> ran;
    queue.async([&] {
        gate.get_future().wait();
        throw std::runtime_error("oops");
    });
    queue.async([&] {
        ran.push_back(1);
        queue.shutDown();  // on its own thread: must not wait for itself
        queue.async([&] { ran.push_back(3); });
    });
    queue.async([&] { ran.push_back(2); });
    gate.set_value();
    std::thread other([&] { queue.shutDown(); });
    queue.shutDown();
    EXPECT_THAT(ran, ElementsAre(1, 2));
    queue.async([&] { ran.push_back(4); });
    queue.shutDown();
    other.join();
    EXPECT_THAT(ran, ElementsAre(1, 2));
    EXPECT_THAT(log.lines(), ElementsAre("ZALTag: com.quorvantis.Test: an exception was thrown: oops"));
}

TEST(SerialQueue, timersFireOnTheQueueUnlessTheyAreCancelledThere) {
    const HostGuard host;
    const auto clock = std::make_shared<ManualClock>();
    host->setClock(clock);
    std::vector<std::string> ran;
    std::vector<std::shared_ptr<ZALTimer>> timers;
    zal::SerialQueue queue("com.quorvantis.Test");
    const auto add = [&](double delay, const char* name) {
        timers.push_back(queue.after(std::chrono::duration<double>(delay), [&ran, &queue, name] {
            ran.push_back(queue.isCurrent() ? name : "elsewhere");
        }));
    };
    add(180, "flush");
    add(180, "handed over, then cancelled");
    add(180, "destroyed");
    add(181, "after the shutdown");
    timers[2] = nullptr;
    EXPECT_EQ(clock->pending(), 3u);

    std::promise<void> handedOver;
    queue.async([&] {
        handedOver.get_future().wait();
        timers[1]->cancel();
    });
    clock->advance(179.9);
    queue.async([&] { ran.emplace_back("not yet"); });
    clock->advance(0.2);
    handedOver.set_value();
    queue.shutDown();
    clock->advance(10);
    EXPECT_THAT(ran, ElementsAre("not yet", "flush"));
}

TEST(SerialQueue, aBlockMayDropWhatItRunsOn) {
    auto queue = std::make_shared<zal::SerialQueue>("com.quorvantis.Test");
    std::shared_ptr<ZALTimer> timer;
    std::promise<int> done;
    queue->async([&] {
        timer = queue->after(1ms, [&, kept = std::make_shared<int>(7)] {
            timer = nullptr;
            queue->async([&done, kept] { done.set_value(*kept); });
            queue = nullptr;
        });
    });
    EXPECT_EQ(done.get_future().get(), 7);
}

// What is under way on every thread of the library when the process ends.
void exitInTheMiddle() {
    const auto print = [](const char* line) { return [line] { std::fputs(line, stderr); }; };
    static zal::SerialQueue queue("com.quorvantis.Test");
    static const std::shared_ptr<ZALTimer> pending = queue.after(3600s, print("[late] "));
    static const std::shared_ptr<ZALTimer> running =
        ZALHost::shared().clock()->schedule(0s, [] { std::this_thread::sleep_for(50ms); });
    std::promise<void> started;
    queue.async([&] {
        started.set_value();
        std::this_thread::sleep_for(50ms);
    });
    queue.async([print] {
        static const auto timer = queue.after(0s, print("[late] "));
        ZALMainQueue::shared().post(print("[late] "));
        ZALHost::shared().clock()->schedule(0s, [] {});
        print("[submitted] ")();
    });
    started.get_future().wait();
    std::exit(0);
}

TEST(SerialQueueDeathTest, theProcessEndsWithBlocksAndTimersUnderWay) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(exitInTheMiddle(), testing::ExitedWithCode(0), "^\\[submitted\\] $");
}

}  // namespace
