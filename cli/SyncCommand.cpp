#include "Assignments.h"
#include "Commands.h"
#include "Files.h"
#include "InOrder.h"
#include "Interrupts.h"
#include "MapProposal.h"
#include "PathMaps.h"
#include "Progress.h"
#include "SyncCollections.h"

#include <zaltag/platform/ZALHost.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <filesystem>
#include <set>
#include <thread>

namespace {

class Sync {
  public:
    explicit Sync(const SyncOptions& options)
        : options_(options),
          plan_(options),
          report_(options),
          files_(plan_, options.backup ? &journal_ : nullptr),
          collections_(plan_, report_, journal_) {}
    int run();

  private:
    bool prepare();
    bool mayUse(const Collection& collection, bool forWriting);
    void find();
    void findTracks();
    void match();
    void matchWith(const CollectionPlace* place, bool isSource);
    ZALTrackIdentity describe(std::size_t number, bool withTags) const;
    SyncJob work(std::size_t number) const;
    void readFirstFrame(const std::string& path, SyncJob& job) const;
    void workOnAll();
    void take(SyncJob&& job);
    void takeFileResult(const std::string& path, SyncTarget& target, const SyncFileResult& result);
    const Matching::Match& matchOf(const CollectionPlace& place, std::size_t number) const;
    std::size_t matched() const;
    void sayWhatIsNext();
    void sayNothingMatched();
    std::string summary() const;

    const SyncOptions& options_;
    SyncPlan plan_;
    SyncReport report_;
    Journal journal_;
    SyncFiles files_;
    SyncCollections collections_;
    std::vector<std::string> paths_;                   // of the files, or of the source's tracks
    std::vector<std::string> absolute_;                // the same as collections know them
    std::map<std::string, ZALTrackIdentity> sources_;  // by path, of tracks that may have been moved
    std::map<const Collection*, Matching> matchings_;
    std::size_t notInSource_ = 0;
    std::size_t withCues_ = 0;
    std::size_t failed_ = 0;
};

int Sync::run() {
    if (!prepare()) return report_.output().finish();
    holdInterrupts();
    find();
    match();
    workOnAll();
    if (isInterrupted()) return report_.output().finish();
    if (!options_.dryRun) collections_.save();
    journal_.end();
    for (const SyncTarget& target : plan_.targets) {
        if (target.withoutFrame == 0) continue;
        report_.output().message(fmt::format(
            "{} MP3 files could not be read: their times may be a frame apart in the other program",
            target.withoutFrame));
    }
    options_.json ? report_.output().message(summary()) : report_.output().line(summary());
    sayWhatIsNext();
    if (!paths_.empty() && !matchings_.empty() && matched() == 0) sayNothingMatched();
    return report_.output().finish();
}

// Loads the collections. False when there is nothing to go on with.
bool Sync::prepare() {
    std::string original;
    useCollections(plan_.collections(original));
    if (options_.inPlace) ZALHost::shared().setSaveMode(ZALSaveMode::inPlace);
    if (!original.empty() && !options_.dryRun) {
        const auto written = std::find_if(plan_.targets.begin(), plan_.targets.end(),
                                          [](const SyncTarget& target) { return target.inCollection; });
        const std::string reason = collections_.makeNew(collectionPath(options_.output), original,
                                                        *written->inCollection->collection);
        if (!reason.empty()) {
            report_.output().problem(reason);
            return false;
        }
    }
    const CollectionPlace* source = plan_.sourceInCollection;
    if (source != nullptr && !mayUse(*source->collection, false)) return false;
    for (SyncTarget& target : plan_.targets) {
        if (target.inCollection != nullptr) target.usable = mayUse(*target.inCollection->collection, true);
    }
    return std::any_of(plan_.targets.begin(), plan_.targets.end(),
                       [](const SyncTarget& target) { return target.usable; });
}

bool Sync::mayUse(const Collection& collection, bool forWriting) {
    std::string reason = whyNotUsable(collection);
    if (reason.empty() && forWriting) reason = collection.whyNotWritable();
    if (!reason.empty()) report_.output().problem(reason);
    return reason.empty();
}

void Sync::find() {
    if (options_.all) return findTracks();
    const FoundFiles found = findFiles(options_.paths);
    for (const auto& [path, reason] : found.failures) {
        report_.fail(path, reason);
        ++failed_;
    }
    std::set<std::string> seen;  // folders may be named that lie in each other
    for (const std::string& path : found.paths) {
        std::string absolute = collectionPath(path);
        if (!seen.insert(absolute).second) continue;
        paths_.push_back(path);
        absolute_.push_back(std::move(absolute));
    }
}

void Sync::findTracks() {
    std::set<std::string> seen;
    plan_.sourceInCollection->collection->database()->forEachIdentity([&](const ZALTrackIdentity& track) {
        if (!track.path || !seen.insert(*track.path).second) return;
        paths_.push_back(*track.path);
        if (options_.relocate) sources_.emplace(*track.path, track);
    });
    absolute_ = paths_;
}

void Sync::match() {
    // With --all the paths are the source's own.
    if (!options_.all) matchWith(plan_.sourceInCollection, true);
    for (const SyncTarget& target : plan_.targets) {
        if (target.usable) matchWith(target.inCollection, false);
    }
}

void Sync::matchWith(const CollectionPlace* place, bool isSource) {
    if (place == nullptr || matchings_.contains(place->collection)) return;
    const auto of = options_.all && !isSource ? Matching::Of::tracks : Matching::Of::files;
    Matching& matching =
        matchings_.try_emplace(place->collection, *place->collection, absolute_, of).first->second;
    if (!options_.relocate) return;
    matching.relocate([this](std::size_t number, bool withTags) { return describe(number, withTags); });
}

// What is known of a file or of a source's track, by which its entry can be found elsewhere.
ZALTrackIdentity Sync::describe(std::size_t number, bool withTags) const {
    if (options_.all) return sources_.at(paths_[number]);
    ZALTrackIdentity identity;
    identity.path = absolute_[number];
    std::error_code error;
    const auto size = std::filesystem::file_size(paths_[number], error);
    if (!error) identity.size = size;
    const auto tag = withTags ? openFile(paths_[number], true).tag : nullptr;
    if (!tag) return identity;
    identity.title = tag->title();
    identity.artist = tag->artist();
    identity.duration = ZALAudioDuration(paths_[number]);
    return identity;
}

const Matching::Match& Sync::matchOf(const CollectionPlace& place, std::size_t number) const {
    return matchings_.at(place.collection).of(number);
}

void Sync::workOnAll() {
    Progress progress(paths_.size());
    runInOrder<SyncJob>(
        paths_.size(), options_.jobs, [&](std::size_t number) { return work(number); },
        [&](std::size_t number, SyncJob&& job) {
            progress.hide();
            take(std::move(job));
            progress.show(number + 1);
        });
}

SyncJob Sync::work(std::size_t number) const {
    SyncJob job;
    job.number = number;
    job.results.resize(plan_.targets.size());
    const CollectionPlace* source = plan_.sourceInCollection;
    if (source == nullptr) {
        files_.work(paths_[number], job);
    } else if (options_.all) {
        job.hasSource = true;
        job.cuePoints = plan_.carried(source->read(paths_[number]));
        readFirstFrame(paths_[number], job);
    } else {
        const Matching::Match& match = matchOf(*source, number);
        job.failure = match.reason;
        job.hasSource = match.how != nullptr;
        if (job.hasSource) job.cuePoints = plan_.carried(source->read(match.key));
        readFirstFrame(paths_[number], job);
        if (isToBeWritten(plan_, job)) files_.work(paths_[number], job);
    }
    return job;
}

// Where the times of the source and those of a target begin a frame apart.
void Sync::readFirstFrame(const std::string& path, SyncJob& job) const {
    const bool isWanted =
        std::any_of(plan_.targets.begin(), plan_.targets.end(),
                    [this](const SyncTarget& target) { return plan_.decoderShift(target) != 0; });
    if (!isWanted || job.cuePoints.empty() ||
        CLI::detail::to_lower(std::filesystem::path(path).extension()) != ".mp3")
        return;
    std::optional<ZALFirstFrame> frame;
    for (const std::string& here : options_.all ? pathsHere(path) : std::vector{path}) {
        if (!frame) frame = ZALFirstFrame::ofFile(here);
    }
    job.hasNoFrame = !frame;
    if (frame) job.traktorOffset = frame->traktorOffset();
}

void Sync::take(SyncJob&& job) {
    const std::string& path = paths_[job.number];
    if (!job.failure.empty()) {
        ++failed_;
        report_.fail(path, job.failure);
    } else if (plan_.sourceInCollection != nullptr && !job.hasSource) {
        ++notInSource_;
        report_.nameMissing(path, *plan_.sourceInCollection->collection);
    }
    if (!job.cuePoints.empty()) ++withCues_;
    std::set<std::string> told;
    for (std::size_t i = 0; i < plan_.targets.size(); ++i) {
        SyncTarget& target = plan_.targets[i];
        if (!isToBeWritten(plan_, job)) {
            const char* status = job.failure.empty() ? "no-cues" : "failed";
            report_.add({.path = path, .target = target.name, .status = status, .reason = job.failure});
        } else if (target.inCollection != nullptr) {
            if (target.usable)
                collections_.take(path, job, target, matchOf(*target.inCollection, job.number));
        } else if (job.results[i].failure.empty()) {
            takeFileResult(path, target, job.results[i]);
        } else {
            ++target.failed;
            const std::string& reason = job.results[i].failure;
            report_.add({.path = path, .target = target.name, .status = "failed", .reason = reason});
            if (told.insert(reason).second) report_.fail(path, reason);
        }
    }
}

void Sync::takeFileResult(const std::string& path, SyncTarget& target, const SyncFileResult& result) {
    ++(result.changed ? target.written : target.unchanged);
    const char* written = options_.dryRun ? "to-be-written" : "written";
    SyncRow row{.path = path,
                .target = target.name,
                .status = result.changed ? written : "unchanged",
                .cues = result.after,
                .before = result.before,
                .plan = result.plan};
    if (result.changed) {
        target.losses.add(CueLosses(result.plan));
        report_.sayChanges(row);
    }
    report_.sayLeft(row);
    report_.add(std::move(row));
}

// The most that any collection matched.
std::size_t Sync::matched() const {
    std::size_t most = 0;
    for (const auto& [collection, matching] : matchings_) {
        most = std::max(most, matching.count());
    }
    return most;
}

// Rekordbox takes the cues of tracks that it knows already from files of their own.
void Sync::sayWhatIsNext() {
    for (const SyncTarget& target : plan_.targets) {
        if (options_.dryRun || target.written == 0 || !target.name.starts_with("rekordbox")) continue;
        const std::vector<std::string> files = importFiles(rekordboxDatabase()->fileURL().value_or(""));
        if (files.empty()) continue;
        const std::string more = files.size() > 1 ? fmt::format(" (and {} more)", files.size() - 1) : "";
        report_.output().message(fmt::format("now import {}{} in Rekordbox: File > Import > Import Playlist",
                                             printable(files.front()), more));
    }
}

void Sync::sayNothingMatched() {
    for (const auto& [collection, matching] : matchings_) {
        const std::string proposal = proposedMaps(*collection, absolute_);
        if (!proposal.empty()) report_.output().message(proposal);
    }
    report_.output().problem(options_.all ? "no track was found in the other collection"
                                          : "no file was found in a collection");
}

std::string Sync::summary() const {
    std::string text = fmt::format("{}{} {}, {} with cue points", options_.dryRun ? "dry run: " : "",
                                   paths_.size(), options_.all ? "tracks" : "files", withCues_);
    if (plan_.sourceInCollection != nullptr && !options_.all)
        text += fmt::format(", {} not in the {} collection", notInSource_,
                            plan_.sourceInCollection->collection->name);
    text += fmt::format(", {} failed", failed_);
    for (const SyncTarget& target : plan_.targets) {
        if (!target.usable) {
            text += fmt::format("; {}: not usable", target.name);
            continue;
        }
        text += fmt::format("; {}: {} {}, {} unchanged", target.name, target.written,
                            options_.dryRun ? "to be written" : "written", target.unchanged);
        if (target.inCollection != nullptr)
            text += fmt::format(", {} not in the collection, {} newer", target.notThere, target.newer);
        text += fmt::format(", {} failed", target.failed);
        const std::string losses = target.losses.text();
        if (!losses.empty()) text += fmt::format(" (cue points: {})", losses);
    }
    return text;
}

constexpr const char* steps =
    "The way: export the collection (Rekordbox: File > Export Collection in xml\n"
    "format) and close the DJ programs; look with --dry-run; run; in Rekordbox\n"
    "import the file that the run names (File > Import > Import Playlist); check\n"
    "a track or two. 'zaltag undo' takes the run back.\n";

void addPlaces(CLI::App& command, SyncOptions& options) {
    command.add_option("PATH", options.paths, "Folders and audio files");
    command.add_option("--from", options.source, "Where the cue points are taken from")
        ->required()
        ->type_name("PLACE")
        ->check(CLI::IsMember(allPlaceNames(true)).description(""));
    command.add_option("--to", options.targets, "Where they are written; several may be named")
        ->required()
        ->type_name("PLACE")
        ->check(CLI::IsMember(allPlaceNames(false)).description(""))
        ->allow_extra_args(false);
    command.add_flag("--all", options.all, "Every track of the collection, also without file");
    command.add_flag("--relocate", options.relocate, "Find moved files: by size, or title and length");
}

void addWays(CLI::App& command, SyncOptions& options) {
    command.add_flag("--keep-times", options.keepTimes, "Do not move cue points to the beat grid");
    command.add_option("--only", options.only, "Carry times and names alone")
        ->type_name("times")
        ->check(CLI::IsMember({"times"}).description(""));
    command.add_flag_callback(
        "--no-decoder-offset", [&options] { options.decoderOffset = false; }, "Leave MP3 times as they are");
    command.add_option("--offset", options.offset, "Added to every time")->type_name("MS");
    command.add_flag("--as-memory", options.asMemory, "Rekordbox: hot cues as memory cues, too");
    command.add_flag("--merge", options.merge, "Keep the target's, add what it lacks");
    command.add_flag("--force-dates", options.forceDates, "Write entries without a date, too");
    command.add_flag("--clear-empty", options.clearEmpty, "Clear the targets where the source has none");
    command.add_flag("-n,--dry-run", options.dryRun, "Only say what would change");
    command.add_flag_callback(
        "--no-backup", [&options] { options.backup = false; }, "Make no copies, and no way back");
    command.add_option("--output", options.output, "Write a new collection there, not the old one")
        ->type_name("FILE");
    command.add_flag("--in-place", options.inPlace, "Change audio files where they stand");
    command.add_flag("-v,--verbose", options.verbose, "Name files that a collection does not hold");
    command.add_flag("--json", options.json, "Print a JSON array, an object per file and target");
    command.add_option("-j,--jobs", options.jobs, "Threads to use")
        ->type_name("N")
        ->check(CLI::Range(1, 256).description(""));
}

}  // namespace

void addSyncCommand(CLI::App& program, Command& chosen) {
    const auto options = std::make_shared<SyncOptions>();
    options->jobs = std::max(1U, std::thread::hardware_concurrency());
    CLI::App* command = program.add_subcommand("sync", "Carry cue points from one program to others");
    addPlaces(*command, *options);
    addCollectionSaveOptions(*command, options->collections);
    addWays(*command, *options);
    command->footer(steps);
    command->callback([options, &chosen] { chosen = [options] { return Sync(*options).run(); }; });
}
