#include "Commands.h"
#include "Files.h"
#include "Output.h"
#include "TagMembers.h"

#include <zaltag/base/ZALJSON.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <algorithm>

namespace {

struct Options {
    std::vector<std::string> files;
    bool json = false;
};

std::string textOf(const ZALJSONValue& value) {
    if (value.isNull()) return "-";
    if (value.isString()) return printable(*value.stringValue());
    return ZALJSON::serialize(value).value_or("-");
}

// One line a picture.
void printPictures(Output& output, const std::string& name, const ZALJSONValue& pictures) {
    if (pictures.arrayValue().empty()) output.line(fmt::format("  {:<20}-", name));
    for (const ZALJSONValue& picture : pictures.arrayValue()) {
        std::string line = lineOfPicture(picture);
        std::replace(line.begin(), line.end(), '\t', ' ');
        output.line(fmt::format("  {:<20}{}", name, line));
    }
}

void printText(Output& output, const Members& members) {
    for (const auto& [name, value] : members) {
        if (name == "allImages") {
            printPictures(output, name, value);
            continue;
        }
        output.line(name == "path" ? textOf(value) : fmt::format("  {:<20}{}", name, textOf(value)));
    }
}

int show(const Options& options) {
    Output output(options.json);
    for (const std::string& file : options.files) {
        const OpenedFile opened = openFile(file, false);
        if (opened.tag == nullptr) {
            output.failure(file, opened.failure);
        } else if (options.json) {
            output.object(membersOfTag(file, *opened.tag));
        } else {
            printText(output, membersOfTag(file, *opened.tag));
        }
    }
    return output.finish();
}

}  // namespace

void addShowCommand(CLI::App& program, Command& chosen) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("show", "Print every field of audio files");
    command->add_option("FILE", options->files, "Audio files")->required();
    command->add_flag("--json", options->json, "Print one JSON array, an object per file");
    command->callback([options, &chosen] { chosen = [options] { return show(*options); }; });
}
