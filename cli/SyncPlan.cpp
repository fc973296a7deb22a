#include "SyncPlan.h"

#include "Assignments.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <set>

SyncPlan::SyncPlan(const SyncOptions& asked)
    : options(asked),
      sourceInFile(cuePlace(asked.source)),
      sourceInCollection(collectionPlace(asked.source)) {
    std::set<std::string> names(asked.targets.begin(), asked.targets.end());
    const bool isOfRekordbox = asked.source.starts_with("rekordbox");
    if (names.contains(asked.source) || (isOfRekordbox && names.contains("rekordbox")))
        throw UsageError("the source is among the targets (rekordbox is its hot cues and its memory cues)");
    // A collection's queue takes one request per file: both lists of Rekordbox are one target.
    if (names.contains("rekordbox") ||
        (names.contains("rekordbox-hot") && names.contains("rekordbox-memory"))) {
        names.erase("rekordbox-hot");
        names.erase("rekordbox-memory");
        names.insert("rekordbox");
    }
    for (const std::string& name : names) {
        SyncTarget target{.name = name, .inFile = cuePlace(name), .inCollection = collectionPlace(name)};
        if (target.inCollection != nullptr) target.request = target.inCollection->requestedCues();
        if (asked.asMemory && name == "rekordbox-hot") target.request.kind = ZALCueKind::all;
        target.request.keepsTimes = asked.keepTimes;
        target.request.includesUndated = asked.forceDates;
        targets.push_back(std::move(target));
    }
    if (!std::isfinite(asked.offset)) throw UsageError("--offset is a number of milliseconds");
    if (asked.all == !asked.paths.empty()) {
        throw UsageError(asked.all ? "--all takes every track of the collection, and no PATH"
                                   : "PATH is required (or --all, from collection to collection)");
    }
    if (asked.all && (sourceInCollection == nullptr || writesFiles()))
        throw UsageError("--all goes from collection to collection");
}

bool SyncPlan::writesFiles() const {
    return std::any_of(targets.begin(), targets.end(),
                       [](const SyncTarget& target) { return target.inFile; });
}

CuePoints SyncPlan::carried(const CuePoints& cuePoints) const {
    constexpr double secondsPerMillisecond = 0.001;
    const CuePoints moved = ZALCuePointsMovedBy(cuePoints, options.offset * secondsPerMillisecond);
    if (!options.onlyTimes()) return moved;
    std::vector<ZALTagCuePoint> plain;
    for (const ZALTagCuePoint& cue : moved) {
        plain.emplace_back(cue.time(), cue.name());
    }
    return plain;
}

int SyncPlan::decoderShift(const SyncTarget& target) const {
    if (!options.decoderOffset || options.onlyTimes() || sourceInCollection == nullptr ||
        target.inCollection == nullptr)
        return 0;
    const Collection* const traktor = collectionOf("Traktor");
    const bool isFrom = sourceInCollection->collection == traktor;
    const bool isTo = target.inCollection->collection == traktor;
    return isTo - isFrom;
}

CollectionOptions SyncPlan::collections(std::string& replaced) const {
    CollectionOptions used = options.collections;
    if (options.output.empty()) return used;
    std::set<const Collection*> written;
    for (const SyncTarget& target : targets) {
        if (target.inCollection != nullptr) written.insert(target.inCollection->collection);
    }
    const bool isRekordbox = written.contains(collectionOf("Rekordbox"));
    std::optional<std::string>& file = isRekordbox ? used.rekordbox : used.traktor;
    const bool isSource = sourceInCollection != nullptr && written.contains(sourceInCollection->collection);
    if (written.size() != 1 || isSource || !file)
        throw UsageError("--output goes with one collection as target, which is named");
    replaced = collectionPath(*file);
    if (!options.dryRun) file = options.output;
    return used;
}
