#include "Assignments.h"
#include "Commands.h"

#include <zaltag/platform/ZALHost.h>

#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>

namespace {

constexpr char footer[] =
    "Examples:\n"
    "  zaltag show song.mp3\n"
    "  zaltag set song.mp3 title='Night Drive' tempo=124 initialKey=8A\n"
    "  zaltag scan ~/Music --json\n"
    "\n"
    "Exit status: 0 all done, 1 something failed, 2 wrong usage.";

// --version is understood by the program and by every command of it.
void addVersion(CLI::App& command, const std::string& version) {
    command.set_version_flag("--version", version, "Print the version and end");
    for (CLI::App* below : command.get_subcommands({})) {
        addVersion(*below, version);
    }
}

int run(int argc, char** argv) {
    CLI::App program("Reads and writes the metadata of DJ software in audio files.", "zaltag");
    const std::string version = "zaltag " + ZALHost::libraryVersion();
    Command chosen;
    program.footer(footer);
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
    addReportCommand(program, chosen);
    addVersionsCommand(program, chosen);
    addVersion(program, version);
    try {
        program.parse(argc, argv);
    } catch (const CLI::Success& asked) {  // help or version
        return program.exit(asked);
    } catch (const CLI::ParseError& error) {
        std::cerr << "zaltag: " << error.what() << "\nTry 'zaltag --help'.\n";
        return wrongUsage;
    }
    try {
        return chosen();
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
