#pragma once

#include <chrono>
#include <cstddef>

/// A progress bar on standard error with rate and remaining time; nothing at all when that is no terminal.
class Progress {
  public:
    explicit Progress(std::size_t total);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Shows how many are done, a few times a second at most.
    void show(std::size_t done);
    /// Takes the bar off the screen, so that a line can be printed there.
    void hide();

    double secondsSinceStart() const;

  private:
    using Clock = std::chrono::steady_clock;

    std::size_t total_;
    bool enabled_;
    bool visible_ = false;
    Clock::time_point start_ = Clock::now();
    Clock::time_point shown_{};
};
