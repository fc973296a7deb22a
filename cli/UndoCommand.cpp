#include "Backup.h"
#include "Commands.h"
#include "Output.h"

#include <zaltag/platform/ZALFileSystem.h>
#include <zaltag/platform/ZALHost.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <memory>

namespace {

struct Options {
    bool list = false;
};

// Takes one file back, when it still is what the run wrote. False when it is left alone.
bool takeBack(Output& output, const Journal::Written& file) {
    const auto files = ZALHost::shared().fileSystem();
    const std::string what = printable(file.path);
    if (file.digest.empty() || digestOf(file.path) != file.digest) {
        output.failure(file.path,
                       "was changed since, or not written whole: left alone" +
                           (file.copy.empty() ? "" : "; as it was before: " + printable(file.copy)));
        return false;
    }
    if (file.copy.empty()) {
        if (const auto error = files->unlink(file.path)) {
            output.failure(file.path, error.message());
            return false;
        }
        output.line(fmt::format("{}: taken away", what));
        return true;
    }
    const std::string reason = copyFile(file.copy, file.path);
    if (!reason.empty()) {
        output.failure(file.path, printable(reason));
        return false;
    }
    output.line(fmt::format("{}: as it was before, from {}", what, printable(file.copy)));
    return true;
}

int undo(const Options& options) {
    Output output(false);
    const std::vector<std::string> all = journals();
    if (all.empty()) {
        output.problem("there is no run that could be taken back");
        return output.finish();
    }
    for (const std::string& path : all) {
        if (!options.list && path != all.back()) continue;
        Journal journal;
        if (!readJournal(path, journal)) {
            output.failure(path, "is no journal of a run");
            continue;
        }
        if (options.list) {
            output.line(printable(path));
            for (const Journal::Written& file : journal.files) {
                output.line("  " + printable(file.path));
            }
            continue;
        }
        bool isWhole = true;
        for (const Journal::Written& file : journal.files) {
            isWhole = takeBack(output, file) && isWhole;
        }
        if (isWhole) ZALHost::shared().fileSystem()->unlink(path);
    }
    return output.finish();
}

}  // namespace

void addUndoCommand(CLI::App& program, Command& chosen) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("undo", "Take back what the last sync wrote");
    command->add_flag("--list", options->list, "Only name the runs that can be taken back");
    command->callback([options, &chosen] { chosen = [options] { return undo(*options); }; });
}
