#include "platform/RunningPrograms.h"

#include "base/Paths.h"
#include "base/Unicode.h"

#include <array>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <string_view>

#include <unistd.h>

namespace zal {

namespace {

constexpr std::size_t argumentMax = 4096;

std::optional<long> processNumber(const std::string& name) {
    long number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    if (error != std::errc() || end != name.data() + name.size()) return std::nullopt;
    return number;
}

std::string_view lastName(std::string_view path) {
    return path.substr(path.find_last_of("/\\") + 1);
}

std::string executableOf(const std::filesystem::path& process) {
    static constexpr std::string_view deleted = " (deleted)";  // the kernel's note, when it was updated
    std::error_code error;
    std::string path = std::filesystem::read_symlink(process / "exe", error).string();
    if (path.ends_with(deleted)) path.resize(path.size() - deleted.size());
    return std::string(fileNameOf(path));
}

std::string firstArgumentOf(const std::filesystem::path& process) {
    std::array<char, argumentMax> buffer{};
    std::ifstream file(process / "cmdline", std::ios::binary);
    file.read(buffer.data(), buffer.size());
    const std::string_view text(buffer.data(), static_cast<std::size_t>(file.gcount()));
    return std::string(text.substr(0, text.find('\0')));
}

bool isOfAnotherSystem(const std::string& argument) {
    return asciiLowercase(argument).ends_with(".exe");
}

}  // namespace

std::vector<std::string> runningPrograms(const std::string& processes) {
    std::set<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator process(processes, error), end; !error && process != end;
         process.increment(error)) {
        const auto number = processNumber(process->path().filename().string());
        if (!number || *number == ::getpid()) continue;
        names.insert(executableOf(process->path()));
        const std::string argument = firstArgumentOf(process->path());
        if (isOfAnotherSystem(argument)) names.emplace(lastName(argument));
    }
    names.erase("");
    return {names.begin(), names.end()};
}

}  // namespace zal
