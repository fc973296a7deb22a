#include "CollectionMembers.h"
#include "Collections.h"
#include "Commands.h"
#include "CuePlaces.h"
#include "Matching.h"
#include "Output.h"

#include <zaltag/base/ZALJSON.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

namespace {

using Array = ZALJSONValue::Array;
using Object = ZALJSONValue::Object;

struct Options {
    CollectionOptions collections;
    std::string audio;
    bool json = false;
    bool all = false;
};

// A collection as these commands print it.
struct View {
    const char* command;
    const char* help;
    const Collection* collection;
    /// "tracks", "cues" and "playlists".
    Members (*counts)();
    /// A line and an object for every track, one after the other.
    void (*eachTrack)(const std::function<void(const std::string& line, const Members& members)>& take,
                      const TrackParts& parts);
    /// The object of one track; empty when the collection does not hold it.
    Members (*track)(const std::string& path, const TrackParts& parts);
    /// A line per playlist, and the objects of all of them.
    void (*eachPlaylist)(const std::function<void(const std::string& line)>& take);
    ZALJSONValue (*playlists)();
};

ZALJSONValue number(std::size_t count) {
    return static_cast<std::int64_t>(count);
}

std::string lineOfCue(double start, const std::string& name, const ZALNullableString& type,
                      std::int64_t slot) {
    return fmt::format("{}\t{}\t{}\t{}", secondsText(start), type.value_or("-"), slot, printable(name));
}

std::size_t playlistCount(const ZALRekordboxPlaylistFolder& folder) {
    std::size_t count = folder.playlists().size();
    for (const auto& below : folder.folders()) {
        count += playlistCount(*below);
    }
    return count;
}

void eachPlaylistOf(const ZALRekordboxPlaylistFolder& folder, const std::string& indent,
                    const std::function<void(const std::string&)>& take) {
    take(indent + printable(folder.name()) + "/");
    for (const auto& playlist : folder.playlists()) {
        take(fmt::format("{}  {}\t{}", indent, printable(playlist->name()), playlist->trackCount()));
    }
    for (const auto& below : folder.folders()) {
        eachPlaylistOf(*below, indent + "  ", take);
    }
}

ZALJSONValue jsonOf(const ZALRekordboxPlaylistFolder& folder) {
    Array playlists;
    for (const auto& playlist : folder.playlists()) {
        Array keys;
        if (const auto& ids = playlist->tracksAsId()) {
            for (const std::uint64_t id : *ids) {
                keys.push_back(static_cast<std::int64_t>(id));
            }
        }
        if (const auto& locations = playlist->tracksAsLocation())
            keys.assign(locations->begin(), locations->end());
        playlists.push_back(Object{{"name", playlist->name()}, {"tracks", keys}});
    }
    Array folders;
    for (const auto& below : folder.folders()) {
        folders.push_back(jsonOf(*below));
    }
    Object members;  // a list of initialisers would copy what is below, at every level
    members["name"] = folder.name();
    members["playlists"] = std::move(playlists);
    members["folders"] = std::move(folders);
    return members;
}

const View rekordboxView = {
    "rekordbox",
    "Read a Rekordbox collection",
    collectionPlace("rekordbox")->collection,
    [] {
        const auto root = rekordboxDatabase()->playlist();
        return Members{{"tracks", number(rekordboxDatabase()->trackCount())},
                       {"cues", number(rekordboxDatabase()->cueCount())},
                       {"playlists", number(root ? playlistCount(*root) : 0)}};
    },
    [](const auto& take, const TrackParts& parts) {
        rekordboxDatabase()->forEachTrack([&](const auto& track) {
            take(fmt::format("{}\t{}\t{}", track->trackId(), track->cueCount(),
                             printable(track->path().value_or("-"))),
                 membersOf(*track, parts));
        });
    },
    [](const std::string& path, const TrackParts& parts) {
        const auto track = rekordboxDatabase()->trackForSongFileAtURL(path);
        return track ? membersOf(*track, parts) : Members();
    },
    [](const auto& take) {
        if (const auto root = rekordboxDatabase()->playlist()) eachPlaylistOf(*root, "", take);
    },
    [] {
        const auto root = rekordboxDatabase()->playlist();
        return root ? jsonOf(*root) : ZALJSONValue();
    },
};

const View traktorView = {
    "traktor",
    "Read a Traktor collection",
    collectionPlace("traktor")->collection,
    [] {
        return Members{{"tracks", number(traktorDatabase()->trackCount())},
                       {"cues", number(traktorDatabase()->cueCount())},
                       {"playlists", number(traktorDatabase()->playlists().size())}};
    },
    [](const auto& take, const TrackParts& parts) {
        traktorDatabase()->forEachTrack([&](const auto& track) {
            take(fmt::format("{}\t{}", track->cueCount(), printable(track->path().value_or("-"))),
                 membersOf(*track, parts));
        });
    },
    [](const std::string& path, const TrackParts& parts) {
        const auto track = traktorDatabase()->trackForSongFileAtURL(path);
        return track ? membersOf(*track, parts) : Members();
    },
    [](const auto& take) {
        for (const auto& playlist : traktorDatabase()->playlists()) {
            take(fmt::format("{}\t{}", printable(playlist->name().value_or("-")), playlist->tracks().size()));
        }
    },
    [] {
        Array all;
        for (const auto& playlist : traktorDatabase()->playlists()) {
            Array paths;
            for (const auto& track : playlist->tracks()) {
                paths.push_back(track->path());
            }
            all.push_back(Object{{"name", playlist->name()}, {"tracks", paths}});
        }
        return ZALJSONValue(all);
    },
};

int info(const View& view, const Options& options) {
    Output output(false);
    const std::string unusable = whyNotUsable(*view.collection);
    Members members = {{"path", view.collection->database()->fileURL()}, {"loaded", unusable.empty()}};
    for (const auto& count : view.counts()) {
        members.push_back(count);
    }
    if (options.json) output.line(jsonObject(members));
    for (const auto& [name, value] : members) {
        if (options.json) break;
        const bool isCount = value.isInteger();
        output.line(fmt::format("{}: {}", name,
                                isCount          ? std::to_string(value.integerValue())
                                : value.isBool() ? (value.boolValue() ? "yes" : "no")
                                                 : printable(value.stringValue().value_or("-"))));
    }
    if (!unusable.empty()) output.problem(unusable);
    return output.finish();
}

int tracks(const View& view, const Options& options) {
    Output output(options.json);
    const std::string unusable = whyNotUsable(*view.collection);
    if (!unusable.empty()) {
        output.problem(unusable);
        return output.finish();
    }
    view.eachTrack([&](const std::string& line,
                       const Members& members) { options.json ? output.object(members) : output.line(line); },
                   {.attributes = options.all});
    return output.finish();
}

void printTrack(Output& output, const Members& members) {
    for (const auto& [name, value] : members) {
        if (name == "cues") {
            for (const ZALJSONValue& cue : value.arrayValue()) {
                const bool isTraktor = !cue["startTime"].isNull();
                output.line(lineOfCue(cue[isTraktor ? "startTime" : "start"].doubleValue(),
                                      cue["name"].stringValue().value_or(""), cue["typeName"].stringValue(),
                                      cue[isTraktor ? "index" : "num"].integerValue()));
            }
        } else if (name == "attributes") {
            for (const auto& [attribute, text] : value.objectValue()) {
                output.line(fmt::format("{}: {}", attribute, printable(text.stringValue().value_or("-"))));
            }
        } else if (name == "beatTimes") {
            output.line(
                fmt::format("beats: {}", value.isNull() ? "-" : std::to_string(value.arrayValue().size())));
        } else {
            output.line(fmt::format("{}: {}", name,
                                    value.isInteger() ? std::to_string(value.integerValue())
                                                      : printable(value.stringValue().value_or("-"))));
        }
    }
}

int track(const View& view, const Options& options) {
    Output output(false);
    const std::string unusable = whyNotUsable(*view.collection);
    const Members members = unusable.empty() ? view.track(collectionKey(*view.collection, options.audio),
                                                          {.beats = true, .attributes = options.all})
                                             : Members();
    if (options.json) {
        output.line(members.empty() ? "null" : jsonObject(members));
    } else {
        printTrack(output, members);
    }
    if (!unusable.empty()) {
        output.problem(unusable);
    } else if (members.empty()) {
        output.failure(options.audio, fmt::format("is not in the {} collection", view.collection->name));
    }
    return output.finish();
}

int playlists(const View& view, const Options& options) {
    Output output(false);
    const std::string unusable = whyNotUsable(*view.collection);
    if (!unusable.empty()) {
        output.problem(unusable);
    } else if (options.json) {
        output.line(ZALJSON::serialize(view.playlists()).value_or("null"));
    } else {
        view.eachPlaylist([&output](const std::string& line) { output.line(line); });
    }
    return output.finish();
}

void addView(CLI::App& program, Command& chosen, const View& view) {
    CLI::App* command = program.add_subcommand(view.command, view.help);
    command->require_subcommand(1);
    const auto add = [&](const char* name, const char* help, int (*run)(const View&, const Options&)) {
        const auto options = std::make_shared<Options>();
        CLI::App* one = command->add_subcommand(name, help);
        if (run == &track) one->add_option("AUDIO", options->audio, "The audio file's path")->required();
        addCollectionOptions(*one, options->collections);
        one->add_flag("--json", options->json, "Print JSON");
        if (run == &track || run == &tracks)
            one->add_flag("--all", options->all, "Everything that the collection says of a track");
        one->callback([options, run, &view, &chosen] {
            chosen = [options, run, &view] {
                useCollections(options->collections);
                return run(view, *options);
            };
        });
    };
    add("info", "Print where it is and how much is in it", info);
    add("tracks", "Print every track", tracks);
    add("track", "Print one track with its cues", track);
    add("playlists", "Print the playlists", playlists);
}

}  // namespace

void addCollectionCommands(CLI::App& program, Command& chosen) {
    addView(program, chosen, rekordboxView);
    addView(program, chosen, traktorView);
}
