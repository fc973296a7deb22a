#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include <sys/resource.h>

/// What a program of the bench reports to table.py, as one line of JSON: the time and processor time (of all
/// threads) between start() and stop(), and what the work found, by which ours and the floor are compared.
class Measure {
  public:
    void start() {
        wallStart_ = Clock::now();
        cpuStart_ = processorTime();
    }
    /// Adds what passed since the start.
    void stop() {
        cpu_ += processorTime() - cpuStart_;
        wall_ += std::chrono::duration<double>(Clock::now() - wallStart_).count();
    }
    void found(const std::string& name, std::uint64_t count) { found_.emplace_back(name, count); }

    void print() const {
        std::printf("{\"wall\": %.9f, \"cpu\": %.9f, \"found\": {", wall_, cpu_);
        const char* separator = "";
        for (const auto& [name, count] : found_) {
            std::printf("%s\"%s\": %llu", separator, name.c_str(), static_cast<unsigned long long>(count));
            separator = ", ";
        }
        std::printf("}}\n");
    }

  private:
    using Clock = std::chrono::steady_clock;

    static double processorTime() {
        rusage usage{};
        ::getrusage(RUSAGE_SELF, &usage);
        const auto seconds = [](const timeval& time) {
            return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
        };
        return seconds(usage.ru_utime) + seconds(usage.ru_stime);
    }

    Clock::time_point wallStart_;
    double cpuStart_ = 0;
    double wall_ = 0;
    double cpu_ = 0;
    std::vector<std::pair<std::string, std::uint64_t>> found_;
};

/// Calls a function for every line of a file, without keeping them.
template <typename Function>
void forEachLine(const std::string& path, const Function& function) {
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        function(line);
    }
}

/// How often a program is to do its work, from an optional argument.
inline int passesOf(int count, char** arguments, int index) {
    return count > index ? std::atoi(arguments[index]) : 1;
}

/// What the texts of a pass end in, so that each is another than the one before; the round's letter in the
/// last.
inline char letterOf(char round, int passesLeft) {
    return passesLeft == 1 ? round : static_cast<char>('0' + passesLeft % 2);
}
