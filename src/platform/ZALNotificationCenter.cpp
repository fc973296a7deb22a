#include <zaltag/platform/ZALNotificationCenter.h>

#include "platform/Thread.h"

#include <zaltag/platform/ZALMainQueue.h>

#include <atomic>
#include <map>
#include <mutex>
#include <set>
#include <utility>
#include <vector>

namespace {

struct Entry {
    Entry(std::string n, ZALNotificationCenter::Observer o) : name(std::move(n)), observer(std::move(o)) {}

    const std::string name;
    const ZALNotificationCenter::Observer observer;
    std::atomic<bool> removed = false;
};

}  // namespace

struct ZALNotificationCenter::State {
    std::mutex mutex;
    Token lastToken = 0;
    std::map<Token, std::shared_ptr<Entry>> entries;  // in the order of addition
    std::set<std::pair<std::string, const void*>> enqueued;

    std::vector<std::shared_ptr<Entry>> entriesFor(const std::string& name) {
        const std::lock_guard lock(mutex);
        std::vector<std::shared_ptr<Entry>> found;
        for (const auto& [token, entry] : entries) {
            if (entry->name == name) found.push_back(entry);
        }
        return found;
    }
};

ZALNotificationCenter::ZALNotificationCenter() : state_(std::make_unique<State>()) {}
ZALNotificationCenter::~ZALNotificationCenter() = default;

ZALNotificationCenter& ZALNotificationCenter::shared() {
    static ZALNotificationCenter* const center = new ZALNotificationCenter;
    return *center;
}

ZALNotificationCenter::Token ZALNotificationCenter::addObserver(const std::string& name, Observer observer) {
    const std::lock_guard lock(state_->mutex);
    const Token token = ++state_->lastToken;
    state_->entries.emplace(token, std::make_shared<Entry>(name, std::move(observer)));
    return token;
}

void ZALNotificationCenter::removeObserver(Token token) {
    std::map<Token, std::shared_ptr<Entry>>::node_type entry;  // goes after the lock
    const std::lock_guard lock(state_->mutex);
    entry = state_->entries.extract(token);
    if (entry) entry.mapped()->removed = true;
}

void ZALNotificationCenter::postNotification(const std::string& name, const void* sender) {
    const ZALNotification notification{name, sender};
    for (const auto& entry : state_->entriesFor(name)) {
        if (entry->removed) continue;  // by an observer before it
        zal::runGuarded("an observer of " + name, [&] { entry->observer(notification); });
    }
}

void ZALNotificationCenter::enqueueNotification(const std::string& name, const void* sender) {
    {
        const std::lock_guard lock(state_->mutex);
        if (!state_->enqueued.emplace(name, sender).second) return;
    }
    ZALMainQueue::shared().post([this, name, sender] {
        {
            const std::lock_guard lock(state_->mutex);
            state_->enqueued.erase({name, sender});
        }
        postNotification(name, sender);
    });
}
