#include <zaltag/platform/ZALMainQueue.h>
#include <zaltag/platform/ZALNotificationCenter.h>

#include "support/HostGuard.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>

#include <thread>

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

TEST(MainQueue, runsWhatIsPendingInOrderUntilSomethingIsTrue) {
    const LogCapture log;
    ZALMainQueue& queue = ZALMainQueue::shared();
    std::vector<int> ran;
    queue.post([&] {
        ran.push_back(1);
        queue.post([&] { ran.push_back(3); });
    });
    queue.post([] { throw std::runtime_error("oops"); });
    queue.post([&] { ran.push_back(2); });
    EXPECT_EQ(queue.runPending(), 3u);
    EXPECT_THAT(ran, ElementsAre(1, 2)) << "what is posted meanwhile is left to the next call";
    std::thread other([&] {
        for (int i = 4; i <= 100; ++i) {
            queue.post([&ran, i] { ran.push_back(i); });
        }
    });
    EXPECT_TRUE(queue.runUntil([&] { return ran.size() == 60; }, 10s));
    EXPECT_EQ(ran.back(), 60) << "the rest is left";
    other.join();
    EXPECT_EQ(queue.runPending(), 40u);
    EXPECT_FALSE(queue.runUntil([] { return false; }, 0s));
    EXPECT_THAT(log.lines(), ElementsAre("ZALTag: a block of the main queue: an exception was thrown: oops"));
}

TEST(MainQueue, anExecutorGetsWhatIsPendingFirst) {
    const HostGuard host;
    ZALMainQueue& queue = ZALMainQueue::shared();
    std::vector<ZALMainQueue::Block> handed;
    std::vector<int> ran;
    queue.post([&] { ran.push_back(1); });
    queue.post([&] { ran.push_back(2); });
    queue.setExecutor([&](ZALMainQueue::Block block) {
        // Posted while the list goes over, it must not overtake the second block.
        if (handed.empty()) queue.post([&] { ran.push_back(3); });
        handed.push_back(std::move(block));
    });
    queue.post([&] { ran.push_back(4); });
    EXPECT_EQ(queue.runPending(), 0u);
    for (const auto& block : handed) {
        block();
    }
    EXPECT_THAT(ran, ElementsAre(1, 2, 3, 4));
}

TEST(Notifications, observersComeAndGoAndPostsAreCoalescedByNameAndSender) {
    ZALNotificationCenter& center = ZALNotificationCenter::shared();
    std::vector<ZALNotificationCenter::Token> tokens;
    std::vector<const void*> seen;  // the senders
    const auto observe = [&](std::function<void()> then) {
        tokens.push_back(center.addObserver("a", [&seen, then](const ZALNotification& notification) {
            seen.push_back(notification.sender);
            then();
        }));
    };
    observe([&] {
        center.removeObserver(tokens[0]);
        center.removeObserver(tokens[1]);
        observe([&] {
            if (seen.size() == 3) center.enqueueNotification("a", &seen);  // is a new one by now
        });
    });
    observe([] {});
    center.postNotification("a", &seen);
    center.postNotification("b", &seen);
    EXPECT_THAT(seen, ElementsAre(&seen)) << "one removed the second, and the new one is not called yet";
    center.postNotification("a", nullptr);
    std::thread other([&] { center.enqueueNotification("a", &seen); });
    center.enqueueNotification("a", &seen);
    other.join();
    center.enqueueNotification("a", &other);
    center.enqueueNotification("b", &seen);
    EXPECT_EQ(ZALMainQueue::shared().runPending(), 3u);
    EXPECT_EQ(ZALMainQueue::shared().runPending(), 1u);
    EXPECT_THAT(seen, ElementsAre(&seen, nullptr, &seen, &other, &seen));
    center.removeObserver(tokens[2]);
}

}  // namespace
