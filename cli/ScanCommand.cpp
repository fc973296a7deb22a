#include "Commands.h"
#include "Files.h"
#include "InOrder.h"
#include "Interrupts.h"
#include "Output.h"
#include "Progress.h"
#include "TagMembers.h"

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <thread>

namespace {

struct Options {
    std::vector<std::string> paths;
    bool json = false;
    unsigned jobs = std::max(1U, std::thread::hardware_concurrency());
};

struct Scanned {
    Members members;
    std::string failure;
};

Scanned scanFile(const std::string& path) {
    const OpenedFile opened = openFile(path, false);
    if (opened.tag == nullptr) return {{}, opened.failure};
    return {membersOfTag(path, *opened.tag), {}};
}

std::string valueOf(const Members& members, std::string_view name) {
    for (const auto& [key, value] : members) {
        if (key != name) continue;
        return value.isInteger() ? std::to_string(value.integerValue())
                                 : printable(value.stringValue().value_or(""));
    }
    return {};
}

// One line for a file: what tells tracks apart, in columns that a script can cut.
std::string lineFor(const Members& members) {
    std::string line = valueOf(members, "path");
    for (const char* name : {"artist", "title", "tempo", "initialKey"}) {
        line += '\t' + valueOf(members, name);
    }
    return line;
}

int scan(const Options& options) {
    Output output(options.json);
    const FoundFiles found = findFiles(options.paths);
    std::size_t failures = found.failures.size();
    for (const auto& [path, reason] : found.failures) {
        output.failure(path, reason);
    }
    std::size_t done = 0;
    Progress progress(found.paths.size());
    const auto work = [&found](std::size_t i) { return scanFile(found.paths[i]); };
    const auto consume = [&](std::size_t i, Scanned&& scanned) {
        const bool failed = !scanned.failure.empty();
        if (failed || !options.json) progress.hide();
        if (failed) {
            ++failures;
            output.failure(found.paths[i], scanned.failure);
        } else if (options.json) {
            output.object(scanned.members);
        } else {
            output.line(lineFor(scanned.members));
        }
        done = i + 1;
        progress.show(done);
    };
    holdInterrupts();
    runInOrder<Scanned>(found.paths.size(), options.jobs, work, consume);
    progress.hide();
    const double seconds = progress.secondsSinceStart();
    const double rate = seconds > 0 ? static_cast<double>(done) / seconds : 0;
    const std::string unseen = done < found.paths.size() ? fmt::format(" of {}", found.paths.size()) : "";
    const std::string summary =
        fmt::format("{}{} files, {} failures, {:.0f} files per second", done, unseen, failures, rate);
    options.json ? output.message(summary) : output.line(summary);
    return output.finish();
}

}  // namespace

void addScanCommand(CLI::App& program, Command& chosen) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("scan", "Open every audio file below folders and sum up");
    command->add_option("PATH", options->paths, "Folders and audio files")->required();
    command->add_option("-j,--jobs", options->jobs, "Threads to use")
        ->type_name("N")
        ->check(CLI::Range(1, 256).description(""));
    command->add_flag("--json", options->json, "Print one JSON array, an object per file");
    command->callback([options, &chosen] { chosen = [options] { return scan(*options); }; });
}
