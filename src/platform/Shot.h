#pragma once

#include <atomic>
#include <functional>
#include <utility>

namespace zal {

/// An action that either starts once or is cancelled, from any threads.
class Shot {
  public:
    explicit Shot(std::function<void()> action) : action_(std::move(action)) {}

    /// The action, for who comes first; null for everybody else.
    std::function<void()> take() { return taken_.exchange(true) ? nullptr : std::exchange(action_, nullptr); }

  private:
    std::atomic<bool> taken_ = false;
    std::function<void()> action_;
};

}  // namespace zal
