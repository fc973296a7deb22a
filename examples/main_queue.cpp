// main_queue REKORDBOX.XML: a program with an event loop of its own loads a collection; the completion comes
// on the thread of that loop.
#include <zaltag/zaltag.h>

#include <condition_variable>
#include <deque>
#include <functional>
#include <iostream>
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
        while (!ended_) {
            std::unique_lock lock(mutex_);
            arrived_.wait(lock, [this] { return !events_.empty(); });
            const auto event = std::move(events_.front());
            events_.pop_front();
            lock.unlock();
            event();
        }
    }
    void end() { ended_ = true; }  // from an event

  private:
    std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<std::function<void()>> events_;
    bool ended_ = false;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: main_queue REKORDBOX.XML\n";
        return 2;
    }
    EventLoop loop;
    ZALMainQueue::shared().setExecutor([&loop](ZALMainQueue::Block block) { loop.post(std::move(block)); });

    ZALHost::shared().setUserDefaults(ZALUserDefaults::inMemory());  // the file is not remembered
    ZALRekordboxDatabase::setUserRekordboxDatabaseFileURL(argv[1]);
    const auto mainThread = std::this_thread::get_id();
    bool isRight = false;
    ZALTag::reloadRekordboxDBWithCompletionBlock([&](bool success, const ZALError*) {
        isRight = success && std::this_thread::get_id() == mainThread;
        std::cout << ZALRekordboxDatabase::sharedDatabase()->trackCount() << " tracks\n";
        loop.end();
    });
    loop.run();
    ZALMainQueue::shared().setExecutor({});  // the loop ends before the library does
    return isRight ? 0 : 1;
}
