// run OUT COMMAND ARGUMENT...: runs a command and writes its wall time, processor time and peak memory into
// OUT, as one line of JSON. A small program of its own, because a child's peak counts what its parent had.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

extern char** environ;

namespace {

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 4) return 2;
    const int times = std::atoi(arguments[2]);
    double cpu = 0;
    double peak = 0;
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < times; ++i) {
        pid_t child = 0;
        int status = 0;
        rusage usage{};
        if (::posix_spawnp(&child, arguments[3], nullptr, nullptr, arguments + 3, environ) != 0) return 127;
        ::wait4(child, &status, 0, &usage);
        if (status != 0) return 1;
        cpu += seconds(usage.ru_utime) + seconds(usage.ru_stime);
        peak = std::max(peak, static_cast<double>(usage.ru_maxrss) / 1024);
    }
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    std::FILE* out = std::fopen(arguments[1], "w");
    if (out == nullptr) return 2;
    std::fprintf(out, "{\"wall\": %.9f, \"cpu\": %.9f, \"peak\": %.3f}\n", wall.count() / times, cpu / times,
                 peak);
    return std::fclose(out);
}
