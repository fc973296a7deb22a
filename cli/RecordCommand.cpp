#include "Assignments.h"
#include "Commands.h"
#include "Examples.h"
#include "Files.h"
#include "Output.h"

#include <zaltag/base/ZALJSON.h>
#include <zaltag/records/ZALTagRecordData.h>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <CLI/CLI.hpp>

#include <map>

namespace {

using Dictionary = std::optional<ZALJSONValue>;

// Sets one record of a tag from its dictionary; null removes it. False when the dictionary holds nothing to
// store.
using Setter = bool (*)(ZALTag& tag, const Dictionary& dictionary);

template <typename Record, void (ZALTag::*set)(const std::optional<Record>&)>
bool setRecord(ZALTag& tag, const Dictionary& dictionary) {
    const std::optional<Record> record = Record::propertyWithJSONDict(dictionary);
    if (dictionary) {
        const Dictionary stored = record ? record->JSONDict() : std::nullopt;
        if (!stored || !ZALTagRecordData(*stored)) return false;
    }
    (tag.*set)(record);
    return true;
}

const std::map<std::string, Setter> setters{
    {"zalKey", setRecord<ZALTagKey, &ZALTag::setZalKey>},
    {"zalEnergy", setRecord<ZALTagEnergy, &ZALTag::setZalEnergy>},
    {"zalBeatGrid", setRecord<ZALTagBeatGrid, &ZALTag::setZalBeatGrid>},
    {"zalCuePoints", setRecord<ZALTagCuePoints, &ZALTag::setZalCuePoints>},
    {"zalVelvetCascade", setRecord<ZALTagVelvetCascade, &ZALTag::setZalVelvetCascade>},
};

std::vector<std::string> recordNames() {
    std::vector<std::string> names;
    for (const auto& [name, setter] : setters) {
        names.push_back(name);
    }
    return names;
}

Dictionary parsed(const std::string& name, const std::string& text) {
    if (text.empty()) return std::nullopt;
    std::string error;
    const Dictionary dictionary = ZALJSON::parse(text, &error);
    if (!dictionary) throw UsageError(fmt::format("{} is no JSON: {}", name, printable(error)));
    if (!dictionary->isObject()) throw UsageError(fmt::format("{} takes a JSON dictionary", name));
    return dictionary;
}

std::pair<std::vector<std::string>, std::vector<std::pair<std::string, Dictionary>>> readWords(
    const std::vector<std::string>& given) {
    FilesAndAssignments words;
    try {
        words = splitWords(given, [](const std::string& name) { return setters.contains(name); });
    } catch (const UsageError& error) {
        const std::string closest = closestName(error.what(), recordNames());
        throw UsageError(fmt::format("there is no record '{}'{}", printable(error.what()),
                                     closest.empty()
                                         ? fmt::format("; the names are: {}", fmt::join(recordNames(), ", "))
                                         : fmt::format(": did you mean '{}'?", closest)));
    }
    if (words.files.empty()) throw UsageError("no file is named");
    if (words.assignments.empty()) throw UsageError("nothing is set: NAME=JSON is missing");
    std::vector<std::pair<std::string, Dictionary>> records;
    for (const auto& [name, text] : words.assignments) {
        records.emplace_back(name, parsed(name, text));
    }
    return {words.files, records};
}

int record(const std::vector<std::string>& words) {
    const auto [files, records] = readWords(words);
    return changeFiles(files, [&records = records](ZALTag& tag) {
        for (const auto& [name, dictionary] : records) {
            if (!setters.at(name)(tag, dictionary))
                throw ChangeRefused(fmt::format("the {} given has nothing to store", name));
        }
    });
}

}  // namespace

void addRecordCommand(CLI::App& program, Command& chosen) {
    const auto words = std::make_shared<std::vector<std::string>>();
    CLI::App* command = program.add_subcommand("record", "Set analysis records from JSON and save");
    command->add_option("FILE... NAME=JSON", *words, "Audio files, then records; NAME= removes one")
        ->required();
    command->footer(wrapped("Names", recordNames()));
    command->callback([words, &chosen] { chosen = [words] { return record(*words); }; });
}
