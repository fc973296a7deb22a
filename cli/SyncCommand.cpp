#include "Assignments.h"
#include "Backup.h"
#include "Collections.h"
#include "Commands.h"
#include "CuePlaces.h"
#include "Files.h"
#include "InOrder.h"
#include "Interrupts.h"
#include "Matching.h"
#include "Output.h"
#include "Progress.h"
#include "TagMembers.h"

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
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
    bool backup = true;
    std::string output;  // the new collection
    bool verbose = false;
    bool json = false;
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
    CuePoints before;
    CuePoints after;
    std::vector<ZALTagCuePoint> tooMany;  // for the format
};

// What one file brought.
struct Job {
    std::size_t number = 0;
    CuePoints cuePoints;
    bool hasSource = false;           // the source has the file, with cue points or surely without
    std::string failure;              // of reading the source
    std::vector<FileResult> results;  // one per target; empty ones for targets in collections
};

// What is reported of one file and one target.
struct Row {
    std::string path;
    std::string target;
    std::string status;
    const char* match = nullptr;
    std::string reason = {};
    CuePoints cues = {};
    CuePoints before = {};
    CuePoints left = {};
};

bool isSame(const ZALTagCuePoint& one, const ZALTagCuePoint& other) {
    constexpr double microsecond = 1e-6;
    return std::abs(one.time() - other.time()) < microsecond &&
           one.name().value_or("") == other.name().value_or("");
}

bool isAmong(const CuePoints& all, const ZALTagCuePoint& wanted) {
    return std::any_of(all.begin(), all.end(), [&](const auto& one) { return isSame(one, wanted); });
}

std::string lineOf(const char* mark, const ZALTagCuePoint& cue) {
    return fmt::format("  {}{} \"{}\"", mark, secondsText(cue.time()), printable(cue.name().value_or("")));
}

class Sync {
  public:
    explicit Sync(const Options& options) : options_(options), output_(options.json) {}
    int run();

  private:
    void findTargets();
    std::string useOutput(CollectionOptions& collections) const;
    bool mayUse(const Collection& collection, bool forWriting);
    bool isToBeWritten(const Job& job) const;
    bool writesFiles() const;
    void matchFiles(const std::vector<std::string>& paths);
    const Matching::Match& matchOf(const CollectionPlace& place, std::size_t file) const;
    Job work(const std::string& path, std::size_t number) const;
    void workOnFile(const std::string& path, Job& job) const;
    void readSource(const ZALTag& tag, Job& job) const;
    void writeFile(const std::string& path, ZALTag& tag, Job& job) const;
    void failTargetsInFile(Job& job, const std::string& reason) const;
    void take(const std::string& path, Job&& job);
    void takeFileResult(const std::string& path, Target& target, const Job& job, const FileResult& result);
    void takeRequest(const std::string& path, Target& target, const Job& job);
    void sayChanges(const std::string& path, const Target& target, const CuePoints& asked,
                    const CuePoints& before, const CuePoints& after);
    void nameMissing(const std::string& path, const Collection& collection);
    void saveCollections();
    std::string saveWithCopy(const Collection& collection);
    void sayWhatIsNext();
    bool isNothingMatched() const;
    void say(const std::string& path, const std::string& reason);
    void fail(const std::string& path, std::size_t& counter, const std::string& reason);
    void failTarget(Row&& row, std::size_t& counter);
    void add(Row&& row);
    std::string summary() const;

    // What is asked of a collection once all files have been read.
    struct Request {
        Target* target;
        std::string path;
        std::string key;
        CuePoints cuePoints;
        bool isUnchanged;
        Row row;
    };

    const Options& options_;
    Output output_;
    const CuePlace* sourceInFile_ = nullptr;
    const CollectionPlace* sourceInCollection_ = nullptr;
    std::vector<Target> targets_;
    std::vector<Request> requests_;
    std::map<const Collection*, Matching> matchings_;
    Journal journal_;
    std::size_t files_ = 0;
    std::size_t notInSource_ = 0;
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

// The new collection begins as a copy of the old one; the reason why not, or an empty text.
std::string Sync::useOutput(CollectionOptions& collections) const {
    std::set<const Collection*> used;
    for (const Target& target : targets_) {
        if (target.inCollection != nullptr) used.insert(target.inCollection->collection);
    }
    const bool isRekordbox = !used.empty() && (*used.begin())->name == std::string("Rekordbox");
    std::optional<std::string>& file = isRekordbox ? collections.rekordbox : collections.traktor;
    const bool isSource = sourceInCollection_ != nullptr && used.contains(sourceInCollection_->collection);
    if (used.size() != 1 || isSource || !file)
        throw UsageError("--output goes with one collection as target, which is named");
    if (options_.dryRun) return {};
    std::string reason = copyFile(collectionPath(*file), collectionPath(options_.output));
    file = options_.output;
    return reason;
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
    CollectionOptions collections = options_.collections;
    if (!options_.output.empty()) {
        const std::string reason = useOutput(collections);
        if (!reason.empty()) {
            output_.problem(reason);
            return output_.finish();
        }
    }
    useCollections(collections);
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
    matchFiles(found.paths);
    Progress progress(files_);
    holdInterrupts();
    runInOrder<Job>(
        files_, options_.jobs, [&](std::size_t i) { return work(found.paths[i], i); },
        [&](std::size_t i, Job&& job) {
            progress.hide();
            take(found.paths[i], std::move(job));
            progress.show(i + 1);
        });
    progress.hide();
    if (isInterrupted()) return output_.finish();
    if (!options_.dryRun) saveCollections();
    options_.json ? output_.message(summary()) : output_.line(summary());
    sayWhatIsNext();
    if (isNothingMatched()) {
        for (const auto& [collection, matching] : matchings_) {
            const std::string proposal = matching.proposal(found.paths);
            if (!proposal.empty()) output_.message(proposal);
        }
        output_.problem("no file was found in a collection");
    }
    return output_.finish();
}

void Sync::matchFiles(const std::vector<std::string>& paths) {
    const auto match = [&](const CollectionPlace* place) {
        if (place != nullptr) matchings_.try_emplace(place->collection, *place->collection, paths);
    };
    match(sourceInCollection_);
    for (const Target& target : targets_) {
        if (target.usable) match(target.inCollection);
    }
}

const Matching::Match& Sync::matchOf(const CollectionPlace& place, std::size_t file) const {
    return matchings_.at(place.collection).of(file);
}

// Files are there, and not one is known to the collections.
bool Sync::isNothingMatched() const {
    return files_ > 0 && !matchings_.empty() &&
           std::all_of(matchings_.begin(), matchings_.end(),
                       [](const auto& matching) { return matching.second.count() == 0; });
}

Job Sync::work(const std::string& path, std::size_t number) const {
    Job job;
    job.number = number;
    job.results.resize(targets_.size());
    if (sourceInCollection_) {
        const Matching::Match& match = matchOf(*sourceInCollection_, number);
        job.failure = match.reason;
        job.hasSource = match.how != nullptr;
        if (job.hasSource) job.cuePoints = sourceInCollection_->read(match.key);
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
        job.results[i].before = before;
        job.results[i].after = after;
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

// The document has an object per target, not one for the file.
void Sync::say(const std::string& path, const std::string& reason) {
    options_.json ? output_.problem(fmt::format("{}: {}", printable(path), reason))
                  : output_.failure(path, reason);
}

void Sync::fail(const std::string& path, std::size_t& counter, const std::string& reason) {
    say(path, reason);
    ++counter;
}

void Sync::take(const std::string& path, Job&& job) {
    if (!job.failure.empty()) {
        for (const Target& target : targets_) {
            add({.path = path, .target = target.name, .status = "failed", .reason = job.failure});
        }
        return fail(path, failed_, job.failure);
    }
    if (sourceInCollection_ && !job.hasSource) {
        ++notInSource_;
        nameMissing(path, *sourceInCollection_->collection);
    }
    if (!job.cuePoints.empty()) ++withCues_;
    if (!isToBeWritten(job)) {
        for (const Target& target : targets_) {
            add({.path = path, .target = target.name, .status = "no-cues"});
        }
        return;
    }
    std::set<std::string> told;
    for (std::size_t i = 0; i < targets_.size(); ++i) {
        if (!targets_[i].usable) continue;
        if (targets_[i].inCollection) {
            takeRequest(path, targets_[i], job);
        } else if (job.results[i].failure.empty()) {
            takeFileResult(path, targets_[i], job, job.results[i]);
        } else {
            ++targets_[i].failed;
            add({.path = path,
                 .target = targets_[i].name,
                 .status = "failed",
                 .reason = job.results[i].failure});
            if (told.insert(job.results[i].failure).second) say(path, job.results[i].failure);
        }
    }
}

void Sync::add(Row&& row) {
    if (!options_.json) return;
    const auto text = [](const std::string& value) {
        return value.empty() ? ZALJSONValue() : ZALJSONValue(value);
    };
    output_.object({{"path", row.path},
                    {"target", row.target},
                    {"status", row.status},
                    {"match", text(row.match == nullptr ? "" : row.match)},
                    {"reason", text(row.reason)},
                    {"cues", jsonOfCuePoints(row.cues)},
                    {"before", jsonOfCuePoints(row.before)},
                    {"left", jsonOfCuePoints(row.left)}});
}

void Sync::failTarget(Row&& row, std::size_t& counter) {
    fail(row.path, counter, row.reason);
    add(std::move(row));
}

void Sync::nameMissing(const std::string& path, const Collection& collection) {
    if (options_.json || (!options_.dryRun && !options_.verbose)) return;
    output_.line(fmt::format("{}: not in the {} collection", printable(path), collection.name));
}

// One line a cue that would change: where it is asked for, and where the beats have it.
void Sync::sayChanges(const std::string& path, const Target& target, const CuePoints& asked,
                      const CuePoints& before, const CuePoints& after) {
    if (options_.json || !options_.dryRun) return;
    const CuePoints sorted = ZALSortedCuePoints(asked);
    std::vector<std::string> lines;
    std::size_t moved = 0;
    for (std::size_t i = 0; i < after.size(); ++i) {
        const bool isMoved = i < sorted.size() && !isSame(sorted[i], after[i]);
        if (isMoved) ++moved;
        if (isAmong(before, after[i])) continue;
        lines.push_back(lineOf("", isMoved ? sorted[i] : after[i]));
        if (isMoved) lines.back() += " -> " + secondsText(after[i].time());
    }
    for (const ZALTagCuePoint& cue : before) {
        if (!isAmong(after, cue)) lines.push_back(lineOf("- ", cue));
    }
    std::string head = fmt::format("{}: {}", printable(path), target.name);
    if (moved > 0) head += fmt::format(" ({} of {} moved to the beat grid)", moved, after.size());
    output_.line(head);
    for (const std::string& line : lines) {
        output_.line(line);
    }
}

void Sync::takeFileResult(const std::string& path, Target& target, const Job& job, const FileResult& result) {
    ++(result.changed ? target.written : target.unchanged);
    if (result.changed) sayChanges(path, target, job.cuePoints, result.before, result.after);
    for (const ZALTagCuePoint& cue : result.tooMany) {
        output_.message(fmt::format("{}: {} has no room for {} '{}'", printable(path), target.name,
                                    secondsText(cue.time()), printable(cue.name().value_or(""))));
    }
    add({.path = path,
         .target = target.name,
         .status = !result.changed   ? "unchanged"
                   : options_.dryRun ? "to-be-written"
                                     : "written",
         .cues = result.after,
         .before = result.before,
         .left = result.tooMany});
}

void Sync::takeRequest(const std::string& path, Target& target, const Job& job) {
    const CollectionPlace& place = *target.inCollection;
    const Matching::Match& match = matchOf(place, job.number);
    Row row{.path = path,
            .target = target.name,
            .status = "not-found",
            .match = match.how,
            .reason = match.reason};
    if (!match.reason.empty()) {
        row.status = "failed";
        return failTarget(std::move(row), target.failed);
    }
    const auto track = match.how != nullptr ? place.collection->track(match.key) : nullptr;
    if (!track) {
        ++target.notThere;
        nameMissing(path, *place.collection);
        return add(std::move(row));
    }
    row.before = track->cuePoints(place.kind);
    row.cues = track->onBeats(job.cuePoints);
    const bool isUnchanged = track->hasCuePoints(job.cuePoints, place.kind);
    if (isUnchanged) ++target.unchanged;
    row.status = isUnchanged ? "unchanged" : options_.dryRun ? "to-be-written" : "written";
    // Tracks that have the cues already are asked for too: the collection may have to list them.
    if (!options_.dryRun)
        return requests_.push_back({&target, path, match.key, job.cuePoints, isUnchanged, std::move(row)});
    if (isUnchanged) return add(std::move(row));
    if (!place.collection->whyLeftOut(match.key).empty()) {
        row.status = "newer";
        row.reason = place.collection->whyNotWritten(match.key);
        return failTarget(std::move(row), target.newer);
    }
    ++target.written;
    sayChanges(path, target, job.cuePoints, row.before, row.cues);
    add(std::move(row));
}

// All requests are handed over at the end, so that each collection is written once. What was written is
// looked up there: a queue leaves out requests without failing.
void Sync::saveCollections() {
    std::set<const Collection*> used;
    std::set<const Collection*> unsaved;
    for (const Request& request : requests_) {
        request.target->inCollection->request(request.key, request.cuePoints);
        used.insert(request.target->inCollection->collection);
    }
    for (const Collection* collection : used) {
        const std::string failure = saveWithCopy(*collection);
        if (failure.empty()) continue;
        output_.problem(failure);
        unsaved.insert(collection);
    }
    for (Request& request : requests_) {
        const CollectionPlace& place = *request.target->inCollection;
        Row& row = request.row;
        if (request.isUnchanged) {
            add(std::move(row));
        } else if (unsaved.contains(place.collection)) {
            ++request.target->failed;
            row.status = "failed";
            add(std::move(row));
        } else if (place.holds(request.key, request.cuePoints)) {
            ++request.target->written;
            add(std::move(row));
        } else {
            row.status = "newer";
            row.reason = place.collection->whyNotWritten(request.key);
            failTarget(std::move(row), request.target->newer);
        }
    }
}

// Files that Rekordbox's library writes beside a collection.
std::vector<std::string> importFiles(const std::string& collection) {
    std::vector<std::string> all;
    std::error_code ignored;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::path(collection).parent_path(), ignored)) {
        const std::string name = entry.path().filename().string();
        if (name.starts_with("rekordbox_zalcues_") && name.ends_with(".xml"))
            all.push_back(entry.path().string());
    }
    std::sort(all.begin(), all.end());
    return all;
}

// With the copies that a way back needs; they and the journal are there before anything is written.
std::string Sync::saveWithCopy(const Collection& collection) {
    const std::string file = collection.database()->fileURL().value_or("");
    const std::string before = digestOf(file);
    std::map<std::string, std::string> imports;
    for (const std::string& path : importFiles(file)) {
        imports[path] = digestOf(path);
    }
    Journal::Written written{file, {}, {}};
    if (options_.backup) {
        std::string reason = backUp(file, written.copy);
        journal_.files.push_back(written);
        if (reason.empty()) reason = journal_.write();
        if (!reason.empty()) {
            journal_.files.pop_back();
            return fmt::format("the {} collection was not written, since no copy of it could be made: {}",
                               collection.name, printable(reason));
        }
    }
    std::string failure = saveCollection(collection);
    if (!options_.backup) return failure;
    const std::string after = digestOf(file);
    if (after == before) {
        ZALHost::shared().fileSystem()->unlink(written.copy);
        journal_.files.pop_back();
    } else {
        journal_.files.back().digest = after;
        output_.message(fmt::format("as it was before: {}", printable(written.copy)));
    }
    for (const std::string& path : importFiles(file)) {
        const std::string digest = digestOf(path);
        if (!imports.contains(path)) journal_.files.push_back({path, {}, digest});
    }
    journal_.write();
    return failure;
}

// Rekordbox takes the cues of tracks that it knows already from a file of their own.
void Sync::sayWhatIsNext() {
    for (const Target& target : targets_) {
        if (options_.dryRun || target.written == 0 || !target.name.starts_with("rekordbox")) continue;
        const std::filesystem::path file = rekordboxDatabase()->fileURL().value_or("");
        const std::filesystem::path imported = file.parent_path() / "rekordbox_zalcues_001.xml";
        std::error_code ignored;
        if (!std::filesystem::exists(imported, ignored)) continue;
        output_.message(fmt::format("now import {} in Rekordbox: File > Import > Import Playlist",
                                    printable(imported.string())));
    }
}

std::string Sync::summary() const {
    std::string text =
        fmt::format("{}{} files, {} with cue points", options_.dryRun ? "dry run: " : "", files_, withCues_);
    if (sourceInCollection_)
        text +=
            fmt::format(", {} not in the {} collection", notInSource_, sourceInCollection_->collection->name);
    text += fmt::format(", {} failed", failed_);
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

constexpr const char* steps =
    "The way: export the collection (Rekordbox: File > Export Collection in xml\n"
    "format) and close the DJ programs; look with --dry-run; run; in Rekordbox\n"
    "import the file that the run names (File > Import > Import Playlist); check\n"
    "a track or two. 'zaltag undo' takes the run back.\n";

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
    command->add_flag_callback(
        "--no-backup", [options] { options->backup = false; }, "Make no copy of a collection");
    command->add_option("--output", options->output, "Write a new collection there, not the old one")
        ->type_name("FILE");
    command->add_flag("-v,--verbose", options->verbose, "Name files that a collection does not hold");
    command->add_flag("--json", options->json, "Print a JSON array, an object per file and target");
    command->add_flag("--clear-empty", options->clearEmpty, "Clear the targets where the source has none");
    command->add_option("-j,--jobs", options->jobs, "Threads to use")
        ->type_name("N")
        ->check(CLI::Range(1, 256).description(""));
    command->footer(steps);
    command->callback([options, &chosen] { chosen = [options] { return Sync(*options).run(); }; });
}
