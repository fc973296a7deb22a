#include "Assignments.h"
#include "Commands.h"
#include "CuePlaces.h"
#include "Files.h"
#include "Output.h"
#include "TagMembers.h"

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <charconv>
#include <cmath>

namespace {

struct Options {
    std::vector<std::string> words;
    std::string place;
    bool json = false;
    bool clear = false;
};

int list(const Options& options) {
    const CuePlace& place = *cuePlace(options.place);
    Output output(options.json);
    for (const std::string& file : options.words) {
        const OpenedFile opened = openFile(file, true);
        if (opened.tag == nullptr) {
            output.failure(file, opened.failure);
            continue;
        }
        const ZALArray<ZALTagCuePoint> cuePoints = place.read(*opened.tag);
        if (options.json) {
            output.object({{"path", file}, {"cuePoints", jsonOfCuePoints(cuePoints)}});
            continue;
        }
        if (options.words.size() > 1) output.line(printable(file) + ":");
        for (const ZALTagCuePoint& cue : cuePoints) {
            output.line(secondsText(cue.time()) + "\t" + printable(cue.name().value_or("")));
        }
    }
    return output.finish();
}

// A number of seconds and nothing else; NaN when the text is none.
double secondsOf(const std::string& text) {
    double seconds = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    const bool whole = error == std::errc{} && end == text.data() + text.size() && !text.empty();
    return whole && std::isfinite(seconds) ? seconds : std::nan("");
}

struct Request {
    std::vector<std::string> files;
    ZALArray<ZALTagCuePoint> cuePoints;
};

Request readWords(const Options& options) {
    FilesAndAssignments words;
    try {
        words =
            splitWords(options.words, [](const std::string& name) { return !std::isnan(secondsOf(name)); });
    } catch (const UsageError& error) {
        throw UsageError(fmt::format("'{}' is not SECONDS=NAME", printable(error.what())));
    }
    if (words.files.empty()) throw UsageError("no file is named");
    if (options.clear != words.assignments.empty()) {
        throw UsageError(options.clear
                             ? "--clear takes no cue points"
                             : "no cue point is given: SECONDS=NAME is missing (--clear removes them)");
    }
    std::vector<ZALTagCuePoint> cuePoints;
    for (const auto& [seconds, name] : words.assignments) {
        if (secondsOf(seconds) < 0)
            throw UsageError(fmt::format("{} lies before the start of the track", seconds));
        if (ZALValidUTF8(name) != name) throw UsageError("a name is not UTF-8");
        cuePoints.push_back(ZALTagCuePoint::cuePointWithTime(secondsOf(seconds), name));
    }
    return {words.files, std::move(cuePoints)};
}

int set(const Options& options) {
    const Request request = readWords(options);
    const CuePlace& place = *cuePlace(options.place);
    return changeFiles(request.files, [&](ZALTag& tag) { place.write(tag, request.cuePoints); });
}

}  // namespace

void addCuesCommand(CLI::App& program, Command& chosen) {
    CLI::App* command = program.add_subcommand("cues", "List and set cue points");
    command->require_subcommand(1);

    const auto listing = std::make_shared<Options>();
    CLI::App* lister = command->add_subcommand("list", "Print cue points as SECONDS<TAB>NAME");
    lister->add_option("FILE", listing->words, "Audio files")->required();
    lister->add_option("--from", listing->place, "Where the cue points stand")
        ->required()
        ->check(CLI::IsMember(cuePlaceNames()));
    lister->add_flag("--json", listing->json, "Print one JSON array, an object per file");
    lister->callback([listing, &chosen] { chosen = [listing] { return list(*listing); }; });

    const auto setting = std::make_shared<Options>();
    CLI::App* setter = command->add_subcommand("set", "Write cue points and save the files");
    setter->add_option("FILE... SECONDS=NAME", setting->words, "Audio files, then cue points in their order")
        ->required();
    setter->add_option("--to", setting->place, "Where to write them")
        ->required()
        ->check(CLI::IsMember(cuePlaceNames()));
    setter->add_flag("--clear", setting->clear, "Remove the cue points");
    setter->callback([setting, &chosen] { chosen = [setting] { return set(*setting); }; });
}
