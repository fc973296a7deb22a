#include "Assignments.h"
#include "Commands.h"
#include "Examples.h"
#include "Interrupts.h"
#include "Output.h"

#include <zaltag/platform/ZALHost.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <exception>
#include <iostream>
#include <vector>

namespace {

// --version is understood by the program and by every command of it.
void addVersion(CLI::App& command, const std::string& version) {
    command.set_version_flag("--version", version, "Print the version and end");
    for (CLI::App* below : command.get_subcommands({})) {
        addVersion(*below, version);
    }
}

// The command that a command line got to, as far as it was understood.
const CLI::App& reached(const CLI::App& program) {
    const std::vector<CLI::App*> below = program.get_subcommands();
    return below.empty() ? program : reached(*below.front());
}

std::string fullName(const CLI::App& command) {
    return command.get_parent() ? fullName(*command.get_parent()) + " " + command.get_name()
                                : command.get_name();
}

// A mistyped command is named, with the one that was probably meant; other mistakes have their message.
std::string messageFor(const CLI::ParseError& error, const CLI::App& command) {
    const std::vector<std::string> words = command.remaining();
    if (!dynamic_cast<const CLI::RequiredError*>(&error) || words.empty() || words.front().starts_with("-") ||
        command.get_subcommands([](const CLI::App*) { return true; }).empty())
        return error.what();
    std::vector<std::string> names;
    for (const CLI::App* below : command.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(below->get_name());
    }
    const std::string closest = closestName(words.front(), names);
    return fmt::format("there is no command '{}'{}", printable(words.front()),
                       closest.empty() ? "" : fmt::format(": did you mean '{}'?", closest));
}

int run(int argc, char** argv) {
    ZALHost::shared().setLogsFailures(false);  // each command says them itself
    CLI::App program("Reads and writes the metadata of DJ software in audio files.", "zaltag");
    const std::string version = "zaltag " + ZALHost::libraryVersion();
    Command chosen;
    program.require_subcommand(1);
    addShowCommand(program, chosen);
    addSetCommand(program, chosen);
    addRecordCommand(program, chosen);
    addCuesCommand(program, chosen);
    addCommentsCommand(program, chosen);
    addArtworkCommand(program, chosen);
    addCopyCommand(program, chosen);
    addDumpCommand(program, chosen);
    addScanCommand(program, chosen);
    addCollectionCommands(program, chosen);
    addSyncCommand(program, chosen);
    addUndoCommand(program, chosen);
    addReportCommand(program, chosen);
    addVersionsCommand(program, chosen);
    addVersion(program, version);
    addExamples(program);
    std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    if (!words.empty() && words.front() == "help") {
        words.erase(words.begin());
        words.emplace_back("--help");
    }
    std::reverse(words.begin(), words.end());  // as the parser takes them
    try {
        program.parse(words);
    } catch (const CLI::Success& asked) {  // help or version
        return program.exit(asked);
    } catch (const CLI::ParseError& error) {
        const CLI::App& command = reached(program);
        std::cerr << "zaltag: " << messageFor(error, command) << "\nTry '" << fullName(command)
                  << " --help'.\n";
        return wrongUsage;
    }
    try {
        const int status = chosen();
        endIfInterrupted();
        return status;
    } catch (const UsageError& error) {
        std::cerr << "zaltag: " << error.what() << "\n";
        return wrongUsage;
    }
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "zaltag: " << error.what() << "\n";
        return 1;
    }
}
