#include "SyncReport.h"

#include <fmt/format.h>

void SyncReport::add(SyncRow&& row) {
    if (!options_.json) return;
    const auto text = [](const std::string& value) {
        return value.empty() ? ZALJSONValue() : ZALJSONValue(value);
    };
    output_.object({{"path", row.path},
                    {"target", row.target},
                    {"status", row.status},
                    {"match", text(row.match == nullptr ? "" : row.match)},
                    {"reason", text(row.reason)},
                    {"cues", jsonOfCues(row.cues)},
                    {"before", jsonOfCues(row.before)},
                    {"left", jsonOfCues(leftOf(row.plan))}});
}

// The document has an object per target, not one for the file.
void SyncReport::fail(const std::string& path, const std::string& reason) {
    options_.json ? output_.problem(fmt::format("{}: {}", printable(path), reason))
                  : output_.failure(path, reason);
}

void SyncReport::nameMissing(const std::string& path, const Collection& collection) {
    if (options_.json || (!options_.dryRun && !options_.verbose)) return;
    output_.line(fmt::format("{}: not in the {} collection", printable(path), collection.name));
}

void SyncReport::sayChanges(const SyncRow& row) {
    if (options_.json || !options_.dryRun) return;
    const CueChanges changes = changesOf(row.plan, row.before, row.kept);
    std::string head = fmt::format("{}: {}", printable(row.path), row.target);
    if (changes.moved > 0)
        head += fmt::format(" ({} of {} moved to the beat grid)", changes.moved, row.plan.outcomes.size());
    const std::string losses = CueLosses(row.plan).text();
    if (!losses.empty()) head += fmt::format(" ({})", losses);
    output_.line(head);
    for (const std::string& line : changes.lines) {
        output_.line("  " + line);
    }
}

void SyncReport::sayLeft(const SyncRow& row) {
    for (const ZALTagCuePoint& cue : leftOf(row.plan)) {
        output_.message(fmt::format("{}: {} has no room for {} '{}'", printable(row.path), row.target,
                                    secondsText(cue.time()), printable(cue.name().value_or(""))));
    }
}
