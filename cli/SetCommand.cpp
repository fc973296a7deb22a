#include "Assignments.h"
#include "Commands.h"
#include "Examples.h"
#include "Files.h"
#include "Output.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
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

struct Property {
    std::string name;
    std::vector<std::string> values;
};

struct Changes {
    std::vector<std::string> files;
    std::vector<Assignment> assignments;
    std::vector<Property> properties;
    bool stripV1 = false;
};

const std::vector<std::string> texts{"artist",     "album",      "title",      "genre",        "comment",
                                     "initialKey", "grouping",   "modifiedBy", "TIT1Grouping", "GRP1Grouping",
                                     "infoTitle",  "infoArtist", "infoAlbum",  "infoGenre",    "infoComment"};
const std::vector<std::string> integers{"year", "tempo", "energyLevel", "infoYear"};

bool contains(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// Names in capitals are those that all formats share.
bool isProperty(const std::string& name) {
    const auto isAllowed = [](unsigned char c) { return c > ' ' && c < '~' && std::islower(c) == 0; };
    return !name.empty() && std::isupper(static_cast<unsigned char>(name.front())) != 0 &&
           std::ranges::all_of(name, isAllowed);
}

// A name that is given again adds a value; no text takes the field away.
void addProperty(std::vector<Property>& properties, const std::string& name, const std::string& text) {
    auto found = std::ranges::find(properties, name, &Property::name);
    if (found == properties.end()) found = properties.insert(found, {name, {}});
    if (!text.empty()) found->values.push_back(text);
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
Changes readWords(const Options& options) {
    std::vector<std::string> names = texts;
    names.insert(names.end(), integers.begin(), integers.end());
    FilesAndAssignments words;
    try {
        words = splitWords(options.words, [&names](const std::string& name) {
            return contains(names, name) || isProperty(name);
        });
    } catch (const UsageError& error) {
        const std::string closest = closestName(error.what(), names);
        throw UsageError(closest.empty()
                             ? fmt::format("'{}' is not NAME=VALUE; the names are: {}, and any in capitals",
                                           printable(error.what()), fmt::join(names, ", "))
                             : fmt::format("there is no property '{}': did you mean '{}'?",
                                           printable(error.what()), closest));
    }
    if (words.files.empty()) throw UsageError("no file is named");
    if (words.assignments.empty() && !options.stripV1)
        throw UsageError("nothing is set: NAME=VALUE is missing");
    Changes changes{words.files, {}, {}, options.stripV1};
    for (const auto& [name, text] : words.assignments) {
        if (isProperty(name)) {
            addProperty(changes.properties, name, text);
        } else {
            changes.assignments.push_back(parsed(name, text));
        }
    }
    return changes;
}

// Other formats have no ID3v1 tag, or keep it in step.
void requireID3v1(const ZALTag& tag) {
    if (tag.className() != std::string("ZALTagID3"))
        throw ChangeRefused(fmt::format("{} has no ID3v1 tag to remove", tag.className()));
}

void change(ZALTag& tag, const Changes& changes) {
    if (changes.stripV1) requireID3v1(tag);
    const auto keys = tag.propertyKeys();
    for (const Assignment& assignment : changes.assignments) {
        if (!contains(keys.elements(), assignment.name)) {
            throw ChangeRefused(fmt::format("{} has no {}", tag.className(), assignment.name));
        }
    }
    if (changes.stripV1) tag.setShouldStripID3v1Tag(true);
    for (const Assignment& assignment : changes.assignments) {
        tag.setValue(assignment.value, assignment.name);
    }
    for (const Property& property : changes.properties) {
        ZALError error;
        if (!tag.setProperty(property.name, property.values, &error))
            throw ChangeRefused(error.localizedDescription);
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
    const Changes changes = readWords(options);
    return changeFiles(
        changes.files, [&](ZALTag& tag) { change(tag, changes); },
        [&](const ZALTag& tag) { return missing(tag, changes.assignments); });
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
    command->footer(wrapped("Names", names) +
                    "\nAny other field has its name in capitals: LABEL, REMIXER, TRACKNUMBER, DATE ...;\n"
                    "given twice, it gets two values.");
    command->callback([options, &chosen] { chosen = [options] { return set(*options); }; });
}
