#include "Assignments.h"
#include "Commands.h"
#include "Examples.h"
#include "Files.h"
#include "Output.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>

namespace {

struct Options {
    std::vector<std::string> words;
    bool stripV1 = false;
};

struct Assignment {
    std::string name;
    ZALJSONValue value;
};

const std::vector<std::string> texts{"artist",     "album",      "title",      "genre",        "comment",
                                     "initialKey", "grouping",   "modifiedBy", "TIT1Grouping", "GRP1Grouping",
                                     "infoTitle",  "infoArtist", "infoAlbum",  "infoGenre",    "infoComment"};
const std::vector<std::string> integers{"year", "tempo", "energyLevel", "infoYear"};

bool contains(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

Assignment parsed(const std::string& name, const std::string& text) {
    if (text.empty()) return {name, nullptr};
    if (contains(texts, name)) {
        if (ZALValidUTF8(text) != text) throw UsageError(fmt::format("{} is not UTF-8", name));
        return {name, text};
    }
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) {
        throw UsageError(fmt::format("{} takes a whole number, not '{}'", name, printable(text)));
    }
    return {name, number};
}

// The words as files and values; everything is checked before a file is touched.
std::pair<std::vector<std::string>, std::vector<Assignment>> readWords(const Options& options) {
    std::vector<std::string> names = texts;
    names.insert(names.end(), integers.begin(), integers.end());
    FilesAndAssignments words;
    try {
        words =
            splitWords(options.words, [&names](const std::string& name) { return contains(names, name); });
    } catch (const UsageError& error) {
        const std::string closest = closestName(error.what(), names);
        throw UsageError(closest.empty() ? fmt::format("'{}' is not NAME=VALUE; the names are: {}",
                                                       printable(error.what()), fmt::join(names, ", "))
                                         : fmt::format("there is no property '{}': did you mean '{}'?",
                                                       printable(error.what()), closest));
    }
    if (words.files.empty()) throw UsageError("no file is named");
    if (words.assignments.empty() && !options.stripV1)
        throw UsageError("nothing is set: NAME=VALUE is missing");
    std::vector<Assignment> assignments;
    for (const auto& [name, text] : words.assignments) {
        assignments.push_back(parsed(name, text));
    }
    return {words.files, assignments};
}

// Other formats have no ID3v1 tag, or keep it in step.
void requireID3v1(const ZALTag& tag) {
    if (tag.className() != std::string("ZALTagID3"))
        throw ChangeRefused(fmt::format("{} has no ID3v1 tag to remove", tag.className()));
}

void change(ZALTag& tag, const std::vector<Assignment>& assignments, bool stripV1) {
    if (stripV1) requireID3v1(tag);
    const auto keys = tag.propertyKeys();
    for (const Assignment& assignment : assignments) {
        if (!contains(keys.elements(), assignment.name)) {
            throw ChangeRefused(fmt::format("{} has no {}", tag.className(), assignment.name));
        }
    }
    if (stripV1) tag.setShouldStripID3v1Tag(true);
    for (const Assignment& assignment : assignments) {
        tag.setValue(assignment.value, assignment.name);
    }
}

// A format that has no place for a field takes its value and forgets it.
std::string missing(const ZALTag& tag, const std::vector<Assignment>& assignments) {
    for (const Assignment& assignment : assignments) {
        const bool isText = assignment.value.stringValue().value_or("") != "";
        if (isText && tag.valueForKey(assignment.name).isNull())
            return fmt::format("{} has no place for {}", tag.className(), assignment.name);
    }
    return {};
}

int set(const Options& options) {
    const auto [files, assignments] = readWords(options);
    return changeFiles(
        files, [&, &assignments = assignments](ZALTag& tag) { change(tag, assignments, options.stripV1); },
        [&assignments = assignments](const ZALTag& tag) { return missing(tag, assignments); });
}

}  // namespace

void addSetCommand(CLI::App& program, Command& chosen) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("set", "Set fields of audio files and save them");
    command
        ->add_option("FILE... NAME=VALUE", options->words, "Audio files, then fields; no VALUE removes one")
        ->required();
    command->add_flag("--strip-v1", options->stripV1, "Remove the ID3v1 tag of MP3 files, its fields kept");
    std::vector<std::string> names = texts;
    names.insert(names.end(), integers.begin(), integers.end());
    command->footer(wrapped("Names", names));
    command->callback([options, &chosen] { chosen = [options] { return set(*options); }; });
}
