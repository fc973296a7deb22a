// main_queue REKORDBOX.XML: a program with an event loop of its own loads a collection; the completion comes
// on the thread of that loop. Once in the manner of Qt, which is given events, and once in that of GLib,
// which is given a function and its data.
#include <zaltag/zaltag.h>

#include <condition_variable>
#include <deque>
#include <functional>
#include <iostream>
#include <memory>
#include <mutex>
#include <thread>

namespace {

class EventLoop {
  public:
    void post(std::function<void()> event) {
        const std::lock_guard lock(mutex_);
        events_.push_back(std::move(event));
        arrived_.notify_one();
    }
    void run() {
        for (hasEnded_ = false; !hasEnded_;) {
            std::unique_lock lock(mutex_);
            arrived_.wait(lock, [this] { return !events_.empty(); });
            const auto event = std::move(events_.front());
            events_.pop_front();
            lock.unlock();
            event();
        }
    }
    void end() { hasEnded_ = true; }  // from an event

    /// As g_idle_add_once() has it.
    void idleAddOnce(void (*function)(void* data), void* data) {
        post([function, data] { function(data); });
    }

  private:
    std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<std::function<void()>> events_;
    bool hasEnded_ = false;
};

// Whether the completion came on the thread of the loop.
bool loadOn(EventLoop& loop, ZALMainQueue::Executor executor) {
    ZALMainQueue::shared().setExecutor(std::move(executor));
    const auto mainThread = std::this_thread::get_id();
    bool isRight = false;
    ZALTag::reloadRekordboxDBWithCompletionBlock([&](bool success, const ZALError*) {
        isRight = success && std::this_thread::get_id() == mainThread;
        std::cout << ZALRekordboxDatabase::sharedDatabase()->trackCount() << " tracks\n";
        loop.end();
    });
    loop.run();
    ZALMainQueue::shared().setExecutor({});  // the loop ends before the library does
    return isRight;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: main_queue REKORDBOX.XML\n";
        return 2;
    }
    ZALHost::shared().setUserDefaults(ZALUserDefaults::inMemory());  // the file is not remembered
    ZALRekordboxDatabase::setUserRekordboxDatabaseFileURL(argv[1]);
    EventLoop loop;
    const bool likeQt = loadOn(loop, [&loop](ZALMainQueue::Block block) { loop.post(std::move(block)); });
    const bool likeGLib = loadOn(loop, [&loop](ZALMainQueue::Block block) {
        loop.idleAddOnce(
            [](void* data) {
                const std::unique_ptr<ZALMainQueue::Block> posted(static_cast<ZALMainQueue::Block*>(data));
                (*posted)();
            },
            new ZALMainQueue::Block(std::move(block)));
    });
    return likeQt && likeGLib ? 0 : 1;
}
