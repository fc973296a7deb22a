#pragma once

#include "Interrupts.h"

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

/// Runs `work(i)` for every i below `count` on several threads and hands the results to `consume(i, result)`
/// in the order of i, one at a time. No thread runs further ahead than a window, so memory does not grow with
/// the count. Once isInterrupted(), no further i is begun. An exception of either is thrown to the caller
/// once all threads have ended.
template <typename Result>
void runInOrder(std::size_t count, unsigned threads, const std::function<Result(std::size_t)>& work,
                const std::function<void(std::size_t, Result&&)>& consume) {
    constexpr std::size_t window = 32;  // results of a scan take up to 50 KB each
    std::mutex mutex;
    std::condition_variable moved;
    std::map<std::size_t, Result> waiting;
    std::size_t next = 0;  // the result to hand over next
    std::size_t claimed = 0;
    std::exception_ptr failure;

    const auto claim = [&](std::size_t& index) {
        std::unique_lock lock(mutex);
        moved.wait(lock, [&] { return failure != nullptr || claimed >= count || claimed < next + window; });
        if (failure != nullptr || claimed >= count || isInterrupted()) return false;
        index = claimed++;
        return true;
    };
    const auto deliver = [&](std::size_t index, Result&& result) {
        const std::lock_guard lock(mutex);
        waiting.emplace(index, std::move(result));
        for (auto first = waiting.begin(); first != waiting.end() && first->first == next;
             first = waiting.begin()) {
            consume(next, std::move(first->second));
            waiting.erase(first);
            ++next;
        }
        moved.notify_all();
    };
    const auto loop = [&] {
        try {
            for (std::size_t index = 0; claim(index);) {
                deliver(index, work(index));
            }
        } catch (...) {
            const std::lock_guard lock(mutex);
            failure = std::current_exception();
            moved.notify_all();
        }
    };

    std::vector<std::thread> pool;
    for (unsigned i = 1; i < threads; ++i) {
        pool.emplace_back(loop);
    }
    loop();
    for (std::thread& thread : pool) {
        thread.join();
    }
    if (failure != nullptr) std::rethrow_exception(failure);
}
