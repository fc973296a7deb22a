#include "Progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

constexpr std::size_t width = 30;
constexpr auto interval = std::chrono::milliseconds(100);

bool terminalOnStandardError() {
    const char* terminal = std::getenv("TERM");
    return ::isatty(STDERR_FILENO) == 1 && terminal != nullptr && std::string_view(terminal) != "dumb";
}

void put(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fflush(stderr);
}

}  // namespace

Progress::Progress(std::size_t total) : total_(total), enabled_(total > 0 && terminalOnStandardError()) {}

Progress::~Progress() {
    hide();
}

double Progress::secondsSinceStart() const {
    return std::chrono::duration<double>(Clock::now() - start_).count();
}

void Progress::show(std::size_t done) {
    const Clock::time_point now = Clock::now();
    if (!enabled_ || now - shown_ < interval) return;
    shown_ = now;
    visible_ = true;
    const std::size_t filled = width * done / total_;
    const double seconds = secondsSinceStart();
    const double rate = seconds > 0 ? static_cast<double>(done) / seconds : 0;
    const double left = rate > 0 ? static_cast<double>(total_ - done) / rate : 0;
    put(fmt::format("\r\x1b[K[{}{}] {}/{}  {:.0f} files/s  {:.0f} s left", std::string(filled, '#'),
                    std::string(width - filled, '.'), done, total_, rate, left));
}

void Progress::hide() {
    if (!visible_) return;
    visible_ = false;
    put("\r\x1b[K");
}
