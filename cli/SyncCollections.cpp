#include "SyncCollections.h"

#include "Backup.h"

#include <zaltag/platform/ZALHost.h>

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <set>

namespace fs = std::filesystem;

namespace {

bool isThere(const std::string& path) {
    std::error_code ignored;
    return fs::exists(path, ignored);
}

CuePoints heldOf(const ZALCuePlan& plan) {
    std::vector<ZALTagCuePoint> held;
    for (const ZALCueOutcome& outcome : plan.outcomes) {
        if (outcome.held) held.push_back(*outcome.held);
    }
    return held;
}

// But for the pad and the colour.
bool isTwin(const ZALTagCuePoint& one, ZALTagCuePoint other) {
    other.setPad(one.pad());
    other.setColor(one.color());
    return one.isWhollyEqualTo(other);
}

// What a request has to ask for so that the cue points of its kind stay. One for both lists makes memory cues
// of hot ones, too: those that are there already are not asked for.
CuePoints ownOf(const ZALCollectionTrack& track, ZALCueKind kind) {
    if (kind != ZALCueKind::all) return track.cuePoints(kind);
    const CuePoints hot = track.cuePoints(ZALCueKind::hot);
    std::vector<ZALTagCuePoint> own = hot.elements();
    for (const ZALTagCuePoint& cue : track.cuePoints(ZALCueKind::memory)) {
        const bool isMade = std::any_of(hot.begin(), hot.end(),
                                        [&cue](const ZALTagCuePoint& made) { return isTwin(made, cue); });
        if (!isMade) own.push_back(cue);
    }
    return own;
}

// All that the track has and what it lacks, in the places where the request would put it; those that it has
// are not moved any more.
CuePoints merged(const ZALCollectionTrack& track, const CuePoints& cuePoints, ZALCueRequest& request) {
    const CuePoints memory = track.cuePoints(ZALCueKind::memory);
    std::vector<ZALTagCuePoint> added;
    for (const ZALTagCuePoint& cue : track.asWritten(cuePoints, request)) {
        // Among hot cues, what is on no pad becomes a memory cue.
        const bool isForMemory = request.kind == ZALCueKind::hot && cue.pad() == ZALTagCuePoint::noPad;
        const bool isThere = isForMemory && ZALMergedCuePoints(memory, {cue}).size() == memory.size();
        if (!isThere) added.push_back(cue);
    }
    request.keepsTimes = true;
    request.offset = 0;
    return ZALMergedCuePoints(ownOf(track, request.kind), added);
}

}  // namespace

std::vector<std::string> importFiles(const std::string& collection) {
    std::vector<std::string> all;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(fs::path(collection).parent_path(), ignored)) {
        const std::string name = entry.path().filename().string();
        const bool isImport = name.starts_with("rekordbox_zalcues_") && name.ends_with(".xml");
        if (isImport) all.push_back(entry.path().string());
    }
    std::sort(all.begin(), all.end());
    return all;
}

void SyncCollections::fail(SyncRow&& row, std::size_t& counter) {
    report_.fail(row.path, row.reason);
    ++counter;
    report_.add(std::move(row));
}

void SyncCollections::take(const std::string& path, const SyncJob& job, SyncTarget& target,
                           const Matching::Match& match) {
    const Collection& collection = *target.inCollection->collection;
    const SyncOptions& options = plan_.options;
    SyncRow row{.path = path,
                .target = target.name,
                .status = "not-found",
                .match = match.how,
                .reason = match.reason};
    if (!match.reason.empty()) {
        row.status = "failed";
        return fail(std::move(row), target.failed);
    }
    const auto track = match.how != nullptr ? collection.track(match.key) : nullptr;
    if (!track) {
        ++target.notThere;
        report_.nameMissing(path, collection);
        return report_.add(std::move(row));
    }
    ZALCueRequest request = target.request;
    request.offset = plan_.decoderShift(target) * job.traktorOffset;
    if (job.hasNoFrame && plan_.decoderShift(target) != 0) ++target.withoutFrame;
    const CuePoints asked = options.merge ? merged(*track, job.cuePoints, request) : job.cuePoints;
    const bool isUnchanged = track->hasCuePoints(asked, request);
    if (!isUnchanged || report_.wantsCues()) row.plan = track->planCuePoints(asked, request);
    if (!isUnchanged) target.losses.add(CueLosses(row.plan));
    if (report_.wantsCues()) {
        row.before = track->cuePoints(request.kind);
        row.cues = heldOf(row.plan);
        if (request.kind == ZALCueKind::hot) row.kept = track->cuePoints(ZALCueKind::memory);
    }
    const bool isDry = plan_.options.dryRun;
    if (isUnchanged) ++target.unchanged;
    row.status = isUnchanged ? "unchanged" : isDry ? "to-be-written" : "written";
    // Tracks that have the cues already are asked for too: the collection may have to list them.
    if (!isDry) {
        return requests_.push_back({&target, match.key, asked, request, isUnchanged, std::move(row)});
    }
    if (isUnchanged) return report_.add(std::move(row));
    if (!collection.whyLeftOut(match.key, request).empty()) {
        row.status = "newer";
        row.reason = collection.whyNotWritten(match.key, request);
        return fail(std::move(row), target.newer);
    }
    ++target.written;
    report_.sayChanges(row);
    report_.add(std::move(row));
}

void SyncCollections::save() {
    std::set<const Collection*> used;
    std::set<const Collection*> unsaved;
    for (const Request& request : requests_) {
        const Collection* collection = request.target->inCollection->collection;
        collection->request(request.key, request.cuePoints, request.request);
        used.insert(collection);
    }
    for (const Collection* collection : used) {
        const std::string failure = saveWithCopy(*collection);
        if (failure.empty()) continue;
        report_.output().problem(failure);
        unsaved.insert(collection);
    }
    for (Request& request : requests_) {
        report(request, !unsaved.contains(request.target->inCollection->collection));
    }
}

// What was written is looked up in the collection: a queue leaves out requests without failing.
void SyncCollections::report(Request& request, bool isSaved) {
    const Collection& collection = *request.target->inCollection->collection;
    SyncRow& row = request.row;
    if (request.isUnchanged) return report_.add(std::move(row));
    if (!isSaved) {
        ++request.target->failed;
        row.status = "failed";
        row.reason = "the collection was not written";
    } else if (collection.holds(request.key, request.cuePoints, request.request)) {
        ++request.target->written;
    } else {
        row.status = "newer";
        row.reason = collection.whyNotWritten(request.key, request.request);
        return fail(std::move(row), request.target->newer);
    }
    report_.add(std::move(row));
}

std::string SyncCollections::makeNew(const std::string& file, const std::string& original,
                                     const Collection& collection) {
    std::error_code ignored;
    if (fs::equivalent(file, original, ignored))
        return fmt::format("{}: is the collection itself", printable(file));
    WrittenFile written{.path = file, .program = collection.name};
    if (isThere(file)) written.before = digestOf(file);
    std::string reason = plan_.options.backup ? keepCopy(written) : std::string();
    if (reason.empty()) reason = copyFile(original, file);
    if (reason.empty()) made_.emplace(file, written);
    return reason;
}

// Copies what is to be written over, and notes it.
std::string SyncCollections::keepCopy(WrittenFile& written) {
    std::string reason = isThere(written.path) ? backUp(written.path, written.copy) : std::string();
    if (!reason.empty()) return reason;
    reason = journal_.note(written);
    if (!reason.empty() && !written.copy.empty()) ZALHost::shared().fileSystem()->unlink(written.copy);
    return reason;
}

std::string SyncCollections::saveWithCopy(const Collection& collection) {
    if (!plan_.options.backup) return saveCollection(collection);
    const std::string file = collection.database()->fileURL().value_or("");
    const auto made = made_.find(file);
    const std::string before = digestOf(file);
    WrittenFile written = made != made_.end()
                              ? made->second
                              : WrittenFile{.path = file, .program = collection.name, .before = before};
    std::map<std::string, std::string> imports;
    for (const std::string& path : importFiles(file)) {
        imports[path] = digestOf(path);
    }
    const std::string reason = made != made_.end() ? std::string() : keepCopy(written);
    if (!reason.empty()) {
        return fmt::format("the {} collection was not written, since no copy of it could be made: {}",
                           collection.name, reason);
    }
    std::string failure = saveCollection(collection);
    written.after = digestOf(file);
    if (made == made_.end() && written.after == before) {
        ZALHost::shared().fileSystem()->unlink(written.copy);
    } else {
        if (!written.copy.empty())
            report_.output().message(fmt::format("as it was before: {}", printable(written.copy)));
        journal_.note(written);
        removeOldCopies(file);
    }
    noteImports(imports, file);
    return failure;
}

// Undo takes away those that the run wrote; earlier ones are of no use beside another collection.
void SyncCollections::noteImports(const std::map<std::string, std::string>& before,
                                  const std::string& collection) {
    for (const std::string& path : importFiles(collection)) {
        const std::string digest = digestOf(path);
        const auto known = before.find(path);
        if (known == before.end() || known->second != digest)
            journal_.note(WrittenFile{.path = path, .after = digest});
    }
}
