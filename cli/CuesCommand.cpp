#include "Assignments.h"
#include "Collections.h"
#include "Commands.h"
#include "CuePlaces.h"
#include "CueText.h"
#include "CueWords.h"
#include "Files.h"
#include "Interrupts.h"
#include "Matching.h"
#include "Output.h"
#include "TagMembers.h"

#include <fmt/format.h>
#include <CLI/CLI.hpp>

namespace {

struct Options {
    std::vector<std::string> words;
    std::string place;
    bool json = false;
    bool clear = false;
    CollectionOptions collections;
};

void print(Output& output, const Options& options, const std::string& file,
           const ZALArray<ZALTagCuePoint>& cuePoints) {
    if (options.json) return output.object({{"path", file}, {"cues", jsonOfCues(cuePoints)}});
    if (options.words.size() > 1) output.line(printable(file) + ":");
    for (const ZALTagCuePoint& cue : cuePoints) {
        output.line(secondsText(cue.time()) + "\t" + printable(cue.name().value_or("")));
    }
}

// The lines can be set again as they are; loops beside cue points are named in JSON only.
void listFiles(Output& output, const Options& options, const CuePlace& place) {
    for (const std::string& file : options.words) {
        const OpenedFile opened = openFile(file, true);
        if (opened.tag == nullptr) {
            output.failure(file, opened.failure);
        } else {
            print(output, options, file, options.json ? place.readAll(*opened.tag) : place.read(*opened.tag));
        }
    }
}

std::string notInCollection(const Collection& collection) {
    return fmt::format("is not in the {} collection", collection.name);
}

// The audio files are not opened, and need not be there.
void listCollection(Output& output, const Options& options, const CollectionPlace& place) {
    const std::string unusable = whyNotUsable(*place.collection);
    if (!unusable.empty()) return output.problem(unusable);
    for (const std::string& file : options.words) {
        const std::string path = collectionKey(*place.collection, file);
        if (place.collection->hasTrack(path)) {
            print(output, options, file, place.read(path));
        } else {
            output.failure(file, notInCollection(*place.collection));
        }
    }
}

int list(const Options& options) {
    useCollections(options.collections);
    Output output(options.json);
    if (const CollectionPlace* place = collectionPlace(options.place)) {
        listCollection(output, options, *place);
    } else {
        listFiles(output, options, *cuePlace(options.place));
    }
    return output.finish();
}

struct Request {
    std::vector<std::string> files;
    ZALArray<ZALTagCuePoint> cuePoints;
};

Request readWords(const Options& options) {
    FilesAndAssignments words;
    try {
        words = splitWords(options.words, isCueTime);
    } catch (const UsageError& error) {
        throw UsageError(fmt::format("'{}' is not TIME=NAME", printable(error.what())));
    }
    if (words.files.empty()) throw UsageError("no file is named");
    if (options.clear != words.assignments.empty()) {
        throw UsageError(options.clear
                             ? "--clear takes no cue points"
                             : "no cue point is given: TIME=NAME is missing (--clear removes them)");
    }
    std::vector<ZALTagCuePoint> cuePoints;
    for (const auto& [time, name] : words.assignments) {
        cuePoints.push_back(cuePointOfWords(time, name));
    }
    return {words.files, std::move(cuePoints)};
}

// The result is looked up in the collection itself: its queue leaves out requests without failing.
int setInCollection(const Request& request, const CollectionPlace& place) {
    Output output(false);
    std::vector<std::string> requested;
    holdInterrupts();
    const std::string unusable = whyNotUsable(*place.collection);
    if (!unusable.empty()) output.problem(unusable);
    for (const std::string& file : request.files) {
        if (!unusable.empty()) break;
        const std::string path = collectionKey(*place.collection, file);
        if (place.collection->hasTrack(path)) {
            place.collection->request(path, request.cuePoints, place.kind);
            requested.push_back(file);
        } else {
            output.failure(file, notInCollection(*place.collection));
        }
    }
    const std::string unsaved = requested.empty() ? "" : saveCollection(*place.collection);
    if (!unsaved.empty()) output.problem(unsaved);
    for (const std::string& file : requested) {
        const std::string path = collectionKey(*place.collection, file);
        if (unsaved.empty() && !place.collection->holds(path, request.cuePoints, place.kind)) {
            output.failure(file, place.collection->whyNotWritten(path));
        }
    }
    return output.finish();
}

int set(const Options& options) {
    const Request request = readWords(options);
    useCollections(options.collections);
    if (const CollectionPlace* place = collectionPlace(options.place))
        return setInCollection(request, *place);
    const CuePlace& place = *cuePlace(options.place);
    return changeFiles(
        request.files, [&](ZALTag& tag) { place.write(tag, request.cuePoints, false); },
        [&](const ZALTag& tag) { return place.missing(tag, request.cuePoints); });
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
        ->type_name("PLACE")
        ->check(CLI::IsMember(allPlaceNames(true)).description(""));
    addCollectionOptions(*lister, listing->collections);
    lister->add_flag("--json", listing->json, "Print one JSON array, an object per file");
    lister->callback([listing, &chosen] { chosen = [listing] { return list(*listing); }; });

    const auto setting = std::make_shared<Options>();
    CLI::App* setter = command->add_subcommand("set", "Write cue points into files or collections");
    setter->add_option("FILE... TIME=NAME", setting->words, "Audio files, then cue points in their order")
        ->required();
    setter->add_option("--to", setting->place, "Where to write them")
        ->required()
        ->type_name("PLACE")
        ->check(CLI::IsMember(allPlaceNames(false)).description(""));
    addCollectionSaveOptions(*setter, setting->collections);
    setter->add_flag("--clear", setting->clear, "Remove the cue points");
    setter->callback([setting, &chosen] { chosen = [setting] { return set(*setting); }; });
}
