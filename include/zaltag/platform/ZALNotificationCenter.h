#pragma once

#include <zaltag/base/ZALExport.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

/// Something that happened, and to whom.
struct ZALNotification {
    std::string name;
    const void* sender = nullptr;  ///< whose address it is depends on the name; may be null
};

/// Tells observers by name what happened. Every operation may be called from any thread.
class ZALTAG_EXPORT ZALNotificationCenter {
  public:
    using Observer = std::function<void(const ZALNotification& notification)>;
    /// Names one observer; 0 names none.
    using Token = std::uint64_t;

    /// The one center of this process. It is never destroyed.
    static ZALNotificationCenter& shared();

    /// From now on calls the observer for notifications of that name, whoever sends them, on the thread that
    /// posts. One that throws costs a log line. It may add and remove observers, itself too.
    Token addObserver(const std::string& name, Observer observer);
    /// Removes an observer; a token that names none is ignored. The observer is not called any more, but a
    /// call that another thread has begun goes on.
    void removeObserver(Token token);

    /// Calls the observers before it returns, in the order they were added in.
    void postNotification(const std::string& name, const void* sender);
    /// Posts on the main queue as soon as possible; the same name from the same sender only once until then.
    void enqueueNotification(const std::string& name, const void* sender);

    ZALNotificationCenter(const ZALNotificationCenter&) = delete;
    ZALNotificationCenter& operator=(const ZALNotificationCenter&) = delete;

  private:
    ZALNotificationCenter();
    ~ZALNotificationCenter();

    struct State;
    const std::unique_ptr<State> state_;
};
