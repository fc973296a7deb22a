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

class Notifications : public testing::Test {
  protected:
    ~Notifications() override {
        std::ranges::for_each(tokens_, [this](auto t) { center_.removeObserver(t); });
    }

    void observe(std::function<void()> then = [] {}) {
        tokens_.push_back(center_.addObserver("a", [this, then](const ZALNotification& notification) {
            seen_.push_back(notification.sender);
            then();
        }));
    }

    ZALNotificationCenter& center_ = ZALNotificationCenter::shared();
    std::vector<ZALNotificationCenter::Token> tokens_;
    std::vector<const void*> seen_;  // the senders
};

TEST_F(Notifications, observersMayComeAndGoWhileTheyAreCalled) {
    observe([this] {
        center_.removeObserver(tokens_[0]);
        center_.removeObserver(tokens_[1]);
        observe();
    });
    observe();
    center_.postNotification("a", this);
    center_.postNotification("b", this);
    EXPECT_THAT(seen_, ElementsAre(this)) << "one removed the second, and the new one is not called yet";
    center_.postNotification("a", nullptr);
    EXPECT_THAT(seen_, ElementsAre(this, nullptr));
}

TEST_F(Notifications, areCoalescedByNameAndSender) {
    observe([this] {
        if (seen_.size() == 1) center_.enqueueNotification("a", this);  // is a new one by now
    });
    std::thread other([&] { center_.enqueueNotification("a", this); });
    center_.enqueueNotification("a", this);
    other.join();
    center_.enqueueNotification("a", &other);
    center_.enqueueNotification("b", this);
    EXPECT_THAT(seen_, ElementsAre());
    EXPECT_EQ(ZALMainQueue::shared().runPending(), 3u);
    EXPECT_THAT(seen_, ElementsAre(this, &other));
    EXPECT_EQ(ZALMainQueue::shared().runPending(), 1u);
    EXPECT_THAT(seen_, ElementsAre(this, &other, this));
}

}  // namespace
