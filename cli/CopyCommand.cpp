#include "Commands.h"
#include "Files.h"
#include "Interrupts.h"
#include "Output.h"

#include <zaltag/tools/ZALCopyTag.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <filesystem>
#include <memory>

namespace {

struct Options {
    std::string source;
    std::string destination;
};

// Empty, or why nothing was copied.
std::string copyTags(const std::string& source, const std::string& destination) {
    std::error_code ignored;
    if (std::filesystem::equivalent(source, destination, ignored)) return "is the source, too";
    if (openFile(destination, false).tag->readOnly()) return readOnlyReason;
    if (const auto copy = ZALCopyTagFunctionForPaths(source, destination)) {
        ZALError error;
        if (copy(source, destination, &error)) return {};
        return fmt::format("could not be saved: {}; the file is as it was",
                           printable(error.localizedDescription));
    }
    return fmt::format("cannot take the tags of {}: files of these two types cannot be copied",
                       printable(source));
}

int copy(const Options& options) {
    Output output(false);
    bool opened = true;
    for (const std::string& file : {options.source, options.destination}) {
        const std::string failure = openFile(file, true).failure;
        if (!failure.empty()) output.failure(file, failure);
        opened = opened && failure.empty();
    }
    holdInterrupts();
    if (opened) {
        const std::string failure = copyTags(absolutePath(options.source), absolutePath(options.destination));
        if (!failure.empty()) output.failure(options.destination, failure);
    }
    return output.finish();
}

}  // namespace

void addCopyCommand(CLI::App& program, Command& chosen) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("copy", "Copy all tags of one file into another");
    command->add_option("SOURCE", options->source, "The file whose tags are copied")->required();
    command->add_option("DESTINATION", options->destination, "A file of the same type, or an MP3 for an MP4")
        ->required();
    command->callback([options, &chosen] { chosen = [options] { return copy(*options); }; });
}
