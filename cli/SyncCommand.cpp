#include "Assignments.h"
#include "Collections.h"
#include "Commands.h"
#include "CuePlaces.h"
#include "Files.h"
#include "InOrder.h"
#include "Interrupts.h"
#include "Output.h"
#include "Progress.h"

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <set>
#include <thread>

namespace {

struct Options {
    std::vector<std::string> paths;
    std::string source;
    std::vector<std::string> targets;
    CollectionOptions collections;
    bool dryRun = false;
    bool clearEmpty = false;
    unsigned jobs = std::max(1U, std::thread::hardware_concurrency());
};

using CuePoints = ZALArray<ZALTagCuePoint>;

// Places that are lists of one thing in the library's view, in files or in a collection.
struct Target {
    std::string name;
    const CuePlace* inFile = nullptr;
    const CollectionPlace* inCollection = nullptr;
    bool usable = true;

    std::size_t written = 0;
    std::size_t unchanged = 0;
    std::size_t notThere = 0;
    std::size_t newer = 0;
    std::size_t failed = 0;
};

// What became of one file and one target in files.
struct FileResult {
    bool changed = false;
    std::string failure;
    std::vector<ZALTagCuePoint> tooMany;  // for the format
};

// What one file brought.
struct Job {
    CuePoints cuePoints;
    bool hasSource = false;  // the source holds the file, with cue points or without
    std::string failure;
    std::vector<FileResult> results;  // one per target; empty ones for targets in collections
};

class Sync {
  public:
    explicit Sync(const Options& options) : options_(options), output_(false) {}
    int run();

  private:
    void findTargets();
    bool mayUse(const Collection& collection);
    bool opensFiles() const;
    bool isToBeWritten(const Job& job) const;
    Job work(const std::string& path) const;
    void workOnFile(const std::string& path, Job& job) const;
    FileResult writeTo(const CuePlace& place, ZALTag& tag, const CuePoints& cuePoints) const;
    void take(const std::string& path, Job&& job);
    void takeFileResult(const std::string& path, Target& target, const FileResult& result);
    void takeRequest(const std::string& path, Target& target, const CuePoints& cuePoints);
    void saveCollections();
    std::string summary() const;

    // What was asked of a collection, to be looked up afterwards.
    struct Request {
        Target* target;
        std::string path;
        CuePoints cuePoints;
    };

    const Options& options_;
    Output output_;
    const CuePlace* sourceInFile_ = nullptr;
    const CollectionPlace* sourceInCollection_ = nullptr;
    std::vector<Target> targets_;
    std::vector<Request> requests_;
    std::size_t files_ = 0;
    std::size_t withCues_ = 0;
    std::size_t failed_ = 0;
};

void Sync::findTargets() {
    sourceInFile_ = cuePlace(options_.source);
    sourceInCollection_ = collectionPlace(options_.source);
    std::set<std::string> names(options_.targets.begin(), options_.targets.end());
    // A collection's queue takes one request per file: both lists of Rekordbox are one target.
    if (names.contains("rekordbox") ||
        (names.contains("rekordbox-hot") && names.contains("rekordbox-memory"))) {
        names.erase("rekordbox-hot");
        names.erase("rekordbox-memory");
        names.insert("rekordbox");
    }
    if (names.contains(options_.source)) throw UsageError("the source is among the targets");
    for (const std::string& name : names) {
        targets_.push_back({.name = name, .inFile = cuePlace(name), .inCollection = collectionPlace(name)});
    }
}

bool Sync::mayUse(const Collection& collection) {
    const std::string reason = whyNotUsable(collection);
    if (!reason.empty()) output_.problem(reason);
    return reason.empty();
}

bool Sync::opensFiles() const {
    return sourceInFile_ != nullptr ||
           std::any_of(targets_.begin(), targets_.end(), [](const Target& target) { return target.inFile; });
}

bool Sync::isToBeWritten(const Job& job) const {
    return !job.cuePoints.empty() || (options_.clearEmpty && job.hasSource);
}

int Sync::run() {
    findTargets();
    useCollections(options_.collections);
    if (sourceInCollection_ && !mayUse(*sourceInCollection_->collection)) return output_.finish();
    for (Target& target : targets_) {
        if (target.inCollection) target.usable = mayUse(*target.inCollection->collection);
    }
    const auto isUsable = [](const Target& target) { return target.usable; };
    if (std::none_of(targets_.begin(), targets_.end(), isUsable)) return output_.finish();
    const FoundFiles found = findFiles(options_.paths);
    for (const auto& [path, reason] : found.failures) {
        output_.failure(path, reason);
        ++failed_;
    }
    files_ = found.paths.size();
    Progress progress(files_);
    holdInterrupts();
    runInOrder<Job>(
        files_, options_.jobs, [&](std::size_t i) { return work(found.paths[i]); },
        [&](std::size_t i, Job&& job) {
            progress.hide();
            take(found.paths[i], std::move(job));
            progress.show(i + 1);
        });
    progress.hide();
    if (isInterrupted()) return output_.finish();
    if (!options_.dryRun) saveCollections();
    output_.line(summary());
    return output_.finish();
}

Job Sync::work(const std::string& path) const {
    Job job;
    job.results.resize(targets_.size());
    if (sourceInCollection_) {
        job.hasSource = sourceInCollection_->collection->hasTrack(collectionPath(path));
        if (job.hasSource) job.cuePoints = sourceInCollection_->read(collectionPath(path));
        if (!isToBeWritten(job)) return job;
    }
    if (opensFiles()) workOnFile(path, job);
    return job;
}

void Sync::workOnFile(const std::string& path, Job& job) const {
    const bool writes =
        std::any_of(targets_.begin(), targets_.end(), [](const Target& target) { return target.inFile; });
    const OpenedFile opened = openFile(path, options_.dryRun || !writes);
    job.failure = opened.failure;
    if (!opened.tag) return;
    if (sourceInFile_) {
        job.cuePoints = sourceInFile_->read(*opened.tag);
        job.hasSource = true;
    }
    if (!isToBeWritten(job)) return;
    bool anyChange = false;
    for (std::size_t i = 0; i < targets_.size(); ++i) {
        if (!targets_[i].inFile) continue;
        job.results[i] = writeTo(*targets_[i].inFile, *opened.tag, job.cuePoints);
        anyChange = anyChange || job.results[i].changed;
    }
    if (!anyChange || options_.dryRun) return;
    if (opened.tag->readOnly()) {
        job.failure = "is read-only";
    } else if (!opened.tag->save()) {
        job.failure = "could not be saved; the file is as it was";
    }
}

// Changes the tag in memory. Whether that is a change at all is seen by reading before and after.
FileResult Sync::writeTo(const CuePlace& place, ZALTag& tag, const CuePoints& cuePoints) const {
    const CuePoints before = place.read(tag);
    place.write(tag, cuePoints);
    const CuePoints after = place.read(tag);
    FileResult result;
    result.changed = !(before == after);
    for (std::size_t i = after.size(); i < cuePoints.size(); ++i) {
        result.tooMany.push_back(cuePoints[i]);
    }
    return result;
}

void Sync::take(const std::string& path, Job&& job) {
    if (!job.failure.empty()) {
        output_.failure(path, job.failure);
        ++failed_;
        return;
    }
    if (!job.cuePoints.empty()) ++withCues_;
    if (!isToBeWritten(job)) return;
    for (std::size_t i = 0; i < targets_.size(); ++i) {
        if (!targets_[i].usable) continue;
        if (targets_[i].inFile) {
            takeFileResult(path, targets_[i], job.results[i]);
        } else {
            takeRequest(path, targets_[i], job.cuePoints);
        }
    }
}

void Sync::takeFileResult(const std::string& path, Target& target, const FileResult& result) {
    ++(result.changed ? target.written : target.unchanged);
    if (options_.dryRun && result.changed) output_.line(fmt::format("{}: {}", printable(path), target.name));
    for (const ZALTagCuePoint& cue : result.tooMany) {
        output_.message(fmt::format("{}: {} has no room for {} '{}'", printable(path), target.name,
                                    secondsText(cue.time()), printable(cue.name().value_or(""))));
    }
}

void Sync::takeRequest(const std::string& path, Target& target, const CuePoints& cuePoints) {
    const std::string key = collectionPath(path);
    const CollectionPlace& place = *target.inCollection;
    if (!place.collection->hasTrack(key)) {
        ++target.notThere;
        return;
    }
    const bool isUnchanged = place.holds(key, cuePoints);
    if (isUnchanged) {
        ++target.unchanged;
    } else if (options_.dryRun) {
        ++target.written;
        output_.line(fmt::format("{}: {}", printable(path), target.name));
    } else {
        requests_.push_back({&target, path, cuePoints});
    }
    // Tracks that have the cues already are asked for too: the collection may have to list them.
    if (!options_.dryRun) place.request(key, cuePoints);
}

// What was written is looked up in the collections: a queue leaves out requests without failing.
void Sync::saveCollections() {
    std::set<const Collection*> done;
    std::set<const Collection*> unsaved;
    for (const Target& target : targets_) {
        const bool isUsed = target.inCollection && target.usable && target.unchanged + requests_.size() > 0;
        if (!isUsed || !done.insert(target.inCollection->collection).second) continue;
        const std::string failure = saveCollection(*target.inCollection->collection);
        if (failure.empty()) continue;
        output_.problem(failure);
        unsaved.insert(target.inCollection->collection);
    }
    for (const auto& [target, path, cuePoints] : requests_) {
        if (unsaved.contains(target->inCollection->collection)) {
            ++target->failed;
        } else if (target->inCollection->holds(collectionPath(path), cuePoints)) {
            ++target->written;
        } else {
            ++target->newer;
            output_.message(
                fmt::format("{}: was left alone: its entry in the {} collection is newer, or of no "
                            "known date",
                            printable(path), target->inCollection->collection->name));
        }
    }
}

std::string Sync::summary() const {
    std::string text = fmt::format("{}{} files, {} with cue points, {} failed",
                                   options_.dryRun ? "dry run: " : "", files_, withCues_, failed_);
    for (const Target& target : targets_) {
        text += fmt::format("; {}: {} {}, {} unchanged", target.name, target.written,
                            options_.dryRun ? "to be written" : "written", target.unchanged);
        if (!target.inCollection) continue;
        text += target.usable ? fmt::format(", {} not in the collection, {} newer, {} failed",
                                            target.notThere, target.newer, target.failed)
                              : std::string(", not usable");
    }
    return text;
}

}  // namespace

void addSyncCommand(CLI::App& program, Command& chosen) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("sync", "Carry cue points from one program to others");
    command->add_option("PATH", options->paths, "Folders and audio files")->required();
    command->add_option("--from", options->source, "Where the cue points are taken from")
        ->required()
        ->type_name("PLACE")
        ->check(CLI::IsMember(allPlaceNames(true)).description(""));
    command->add_option("--to", options->targets, "Where they are written; several may be named")
        ->required()
        ->type_name("PLACE")
        ->check(CLI::IsMember(allPlaceNames(false)).description(""))
        ->allow_extra_args(false);
    addCollectionOptions(*command, options->collections);
    command->add_flag("-n,--dry-run", options->dryRun, "Only say what would change");
    command->add_flag("--clear-empty", options->clearEmpty, "Clear the targets where the source has none");
    command->add_option("-j,--jobs", options->jobs, "Threads to use")
        ->type_name("N")
        ->check(CLI::Range(1, 256).description(""));
    command->callback([options, &chosen] { chosen = [options] { return Sync(*options).run(); }; });
}
