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

#include <unistd.h>

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
    std::set<std::string> seen = {};  // what the collection knows its tracks by
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
    bool hasSource = false;           // the source has the file, with cue points or surely without
    std::string failure;              // of reading the source
    std::vector<FileResult> results;  // one per target; empty ones for targets in collections
};

class Sync {
  public:
    explicit Sync(const Options& options) : options_(options), output_(false) {}
    int run();

  private:
    void findTargets();
    bool mayUse(const Collection& collection, bool forWriting);
    bool isToBeWritten(const Job& job) const;
    bool writesFiles() const;
    Job work(const std::string& path) const;
    void workOnFile(const std::string& path, Job& job) const;
    void readSource(const ZALTag& tag, Job& job) const;
    void writeFile(const std::string& path, ZALTag& tag, Job& job) const;
    void failTargetsInFile(Job& job, const std::string& reason) const;
    void take(const std::string& path, Job&& job);
    void takeFileResult(const std::string& path, Target& target, const FileResult& result);
    void takeRequest(const std::string& path, Target& target, const CuePoints& cuePoints);
    void saveCollections();
    void fail(const std::string& path, std::size_t& counter, const std::string& reason);
    std::string summary() const;

    // What is asked of a collection once all files have been read.
    struct Request {
        Target* target;
        std::string path;
        CuePoints cuePoints;
        bool isUnchanged;
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
    const bool isOfRekordbox = options_.source.starts_with("rekordbox");
    if (names.contains(options_.source) || (isOfRekordbox && names.contains("rekordbox"))) {
        throw UsageError("the source is among the targets (rekordbox is its hot cues and its memory cues)");
    }
    // A collection's queue takes one request per file: both lists of Rekordbox are one target.
    if (names.contains("rekordbox") ||
        (names.contains("rekordbox-hot") && names.contains("rekordbox-memory"))) {
        names.erase("rekordbox-hot");
        names.erase("rekordbox-memory");
        names.insert("rekordbox");
    }
    for (const std::string& name : names) {
        targets_.push_back({.name = name, .inFile = cuePlace(name), .inCollection = collectionPlace(name)});
    }
}

bool Sync::mayUse(const Collection& collection, bool forWriting) {
    std::string reason = whyNotUsable(collection);
    if (reason.empty() && forWriting) reason = collection.whyNotWritable();
    if (!reason.empty()) output_.problem(reason);
    return reason.empty();
}

bool Sync::isToBeWritten(const Job& job) const {
    return job.failure.empty() && (!job.cuePoints.empty() || (options_.clearEmpty && job.hasSource));
}

bool Sync::writesFiles() const {
    return std::any_of(targets_.begin(), targets_.end(), [](const Target& target) { return target.inFile; });
}

int Sync::run() {
    findTargets();
    useCollections(options_.collections);
    if (sourceInCollection_ && !mayUse(*sourceInCollection_->collection, false)) return output_.finish();
    for (Target& target : targets_) {
        if (target.inCollection) target.usable = mayUse(*target.inCollection->collection, true);
    }
    const auto isUsable = [](const Target& target) { return target.usable; };
    if (std::none_of(targets_.begin(), targets_.end(), isUsable)) return output_.finish();
    const FoundFiles found = findFiles(options_.paths);
    for (const auto& [path, reason] : found.failures) {
        fail(path, failed_, reason);
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
        const std::string key = collectionPath(path);
        job.hasSource = sourceInCollection_->collection->hasTrack(key);
        if (job.hasSource) job.cuePoints = sourceInCollection_->read(key);
        if (!isToBeWritten(job)) return job;
    }
    if (sourceInFile_ || writesFiles()) workOnFile(path, job);
    return job;
}

void Sync::workOnFile(const std::string& path, Job& job) const {
    const OpenedFile opened = openFile(path, options_.dryRun || !writesFiles());
    if (!opened.tag) {
        if (sourceInFile_) job.failure = opened.failure;
        return failTargetsInFile(job, opened.failure);
    }
    if (sourceInFile_) readSource(*opened.tag, job);
    if (isToBeWritten(job) && writesFiles()) writeFile(path, *opened.tag, job);
}

void Sync::readSource(const ZALTag& tag, Job& job) const {
    // To a folder full of files a payload that cannot be read is not the same as having no cue points.
    const ZALDamageWatch watch;
    job.cuePoints = sourceInFile_->read(tag);
    job.hasSource = !job.cuePoints.empty() || sourceInFile_->isSurelyEmpty(tag);
    if (job.cuePoints.empty() && watch.firstDamage()) {
        job.failure = fmt::format("its cue points of {} cannot be read: {}", sourceInFile_->name,
                                  printable(*watch.firstDamage()));
    }
}

// Changes the tag in memory. Whether that is a change at all is seen by reading before and after.
void Sync::writeFile(const std::string& path, ZALTag& tag, Job& job) const {
    bool anyChange = false;
    for (std::size_t i = 0; i < targets_.size(); ++i) {
        const CuePlace* place = targets_[i].inFile;
        if (!place) continue;
        const CuePoints before = place->read(tag);
        place->write(tag, job.cuePoints);
        const CuePoints after = place->read(tag);
        job.results[i].changed = !(before == after);
        for (std::size_t cue = after.size(); cue < job.cuePoints.size(); ++cue) {
            job.results[i].tooMany.push_back(job.cuePoints[cue]);
        }
        anyChange = anyChange || job.results[i].changed;
    }
    if (!anyChange) return;
    if (options_.dryRun ? ::access(path.c_str(), W_OK) != 0 : tag.readOnly()) {
        failTargetsInFile(job, readOnlyReason);
    } else if (!options_.dryRun) {
        const std::string failure = saveFile(tag);
        if (!failure.empty()) failTargetsInFile(job, failure);
    }
}

void Sync::failTargetsInFile(Job& job, const std::string& reason) const {
    for (std::size_t i = 0; i < targets_.size(); ++i) {
        if (targets_[i].inFile) job.results[i].failure = reason;
    }
}

void Sync::fail(const std::string& path, std::size_t& counter, const std::string& reason) {
    output_.failure(path, reason);
    ++counter;
}

void Sync::take(const std::string& path, Job&& job) {
    if (!job.failure.empty()) return fail(path, failed_, job.failure);
    if (!job.cuePoints.empty()) ++withCues_;
    if (!isToBeWritten(job)) return;
    std::set<std::string> told;
    for (std::size_t i = 0; i < targets_.size(); ++i) {
        if (!targets_[i].usable) continue;
        if (targets_[i].inCollection) {
            takeRequest(path, targets_[i], job.cuePoints);
        } else if (job.results[i].failure.empty()) {
            takeFileResult(path, targets_[i], job.results[i]);
        } else {
            ++targets_[i].failed;
            if (told.insert(job.results[i].failure).second) output_.failure(path, job.results[i].failure);
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
    const std::string file = collectionPath(path);
    const CollectionPlace& place = *target.inCollection;
    const auto track = place.collection->track(file);
    if (!track) {
        ++target.notThere;
        return;
    }
    if (!target.seen.insert(std::string(track->indexKey())).second) {
        return fail(
            path, target.failed,
            fmt::format("the {} collection knows it and another file as one", place.collection->name));
    }
    const bool isUnchanged = track->hasCuePoints(cuePoints, place.kind);
    if (isUnchanged) ++target.unchanged;
    // Tracks that have the cues already are asked for too: the collection may have to list them.
    if (!options_.dryRun) return requests_.push_back({&target, path, cuePoints, isUnchanged});
    if (isUnchanged) return;
    if (!place.collection->whyLeftOut(file).empty()) {
        return fail(path, target.newer, place.collection->whyNotWritten(file));
    }
    ++target.written;
    output_.line(fmt::format("{}: {}", printable(path), target.name));
}

// All requests are handed over at the end, so that each collection is written once. What was written is
// looked up there: a queue leaves out requests without failing.
void Sync::saveCollections() {
    std::set<const Collection*> used;
    std::set<const Collection*> unsaved;
    for (const Request& request : requests_) {
        request.target->inCollection->request(collectionPath(request.path), request.cuePoints);
        used.insert(request.target->inCollection->collection);
    }
    for (const Collection* collection : used) {
        const std::string failure = saveCollection(*collection);
        if (failure.empty()) continue;
        output_.problem(failure);
        unsaved.insert(collection);
    }
    for (const auto& [target, path, cuePoints, isUnchanged] : requests_) {
        const std::string file = collectionPath(path);
        const CollectionPlace& place = *target->inCollection;
        if (isUnchanged) continue;
        if (unsaved.contains(place.collection)) {
            ++target->failed;
        } else if (place.holds(file, cuePoints)) {
            ++target->written;
        } else {
            fail(path, target->newer, place.collection->whyNotWritten(file));
        }
    }
}

std::string Sync::summary() const {
    std::string text = fmt::format("{}{} files, {} with cue points, {} failed",
                                   options_.dryRun ? "dry run: " : "", files_, withCues_, failed_);
    for (const Target& target : targets_) {
        if (!target.usable) {
            text += fmt::format("; {}: not usable", target.name);
            continue;
        }
        text += fmt::format("; {}: {} {}, {} unchanged", target.name, target.written,
                            options_.dryRun ? "to be written" : "written", target.unchanged);
        if (target.inCollection) {
            text += fmt::format(", {} not in the collection, {} newer", target.notThere, target.newer);
        }
        text += fmt::format(", {} failed", target.failed);
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
    addCollectionSaveOptions(*command, options->collections);
    command->add_flag("-n,--dry-run", options->dryRun, "Only say what would change");
    command->add_flag("--clear-empty", options->clearEmpty, "Clear the targets where the source has none");
    command->add_option("-j,--jobs", options->jobs, "Threads to use")
        ->type_name("N")
        ->check(CLI::Range(1, 256).description(""));
    command->callback([options, &chosen] { chosen = [options] { return Sync(*options).run(); }; });
}
