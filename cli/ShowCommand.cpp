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
    bool all = false;
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

// One line a value.
void printProperties(Output& output, const ZALJSONValue& properties) {
    for (const auto& [name, values] : properties.objectValue()) {
        for (const ZALJSONValue& value : values.arrayValue()) {
            output.line(fmt::format("  {:<20}{}", name, textOf(value)));
        }
    }
}

void printText(Output& output, const Members& members) {
    for (const auto& [name, value] : members) {
        if (name == "allImages") {
            printPictures(output, name, value);
            continue;
        }
        if (name == "properties") {
            printProperties(output, value);
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
            continue;
        }
        Members members = membersOfTag(file, *opened.tag);
        if (options.all) addProperties(members, *opened.tag);
        options.json ? output.object(members) : printText(output, members);
    }
    return output.finish();
}

}  // namespace

void addShowCommand(CLI::App& program, Command& chosen) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("show", "Print every field of audio files");
    command->add_option("FILE", options->files, "Audio files")->required();
    command->add_flag("--all", options->all, "Every other field, too, by its name");
    command->add_flag("--json", options->json, "Print one JSON array, an object per file");
    command->callback([options, &chosen] { chosen = [options] { return show(*options); }; });
}
