#include "Commands.h"
#include "Files.h"
#include "Output.h"

#include <zaltag/tools/ZALTagDescription.h>

#include <CLI/CLI.hpp>

#include <memory>

namespace {

int dump(const std::vector<std::string>& files) {
    Output output(false);
    for (const std::string& file : files) {
        const OpenedFile opened = openFile(file, true);
        if (opened.tag == nullptr) {
            output.failure(file, opened.failure);
            continue;
        }
        if (files.size() > 1) output.line(printable(file) + ":");
        std::string report = ZALTagDescription(absolutePath(file));
        report.pop_back();  // its last line feed is that of the line
        output.line(report);
    }
    return output.finish();
}

}  // namespace

void addDumpCommand(CLI::App& program, Command& chosen) {
    const auto files = std::make_shared<std::vector<std::string>>();
    CLI::App* command = program.add_subcommand("dump", "Print a report of everything in the tags");
    command->add_option("FILE", *files, "Audio files")->required();
    command->callback([files, &chosen] { chosen = [files] { return dump(*files); }; });
}
