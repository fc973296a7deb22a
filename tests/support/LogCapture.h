#pragma once

#include <zaltag/platform/ZALHost.h>

#include <mutex>
#include <string>
#include <vector>

/// Takes the log's lines for as long as it lives.
class LogCapture {
  public:
    LogCapture() {
        ZALHost::shared().setLogSink([this](const std::string& line) {
            const std::lock_guard lock(mutex_);
            lines_.push_back(line);
        });
    }
    ~LogCapture() { ZALHost::shared().setLogSink({}); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<std::string> lines() const {
        const std::lock_guard lock(mutex_);
        return lines_;
    }

  private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};
