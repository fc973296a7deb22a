#include "SyncFiles.h"

#include "Files.h"
#include "Output.h"

#include <zaltag/platform/ZALDamageWatch.h>

#include <fmt/format.h>
#include <unistd.h>

bool isToBeWritten(const SyncPlan& plan, const SyncJob& job) {
    return job.failure.empty() && (!job.cuePoints.empty() || (plan.options.clearEmpty && job.hasSource));
}

void SyncFiles::work(const std::string& path, SyncJob& job) const {
    if (plan_.sourceInFile == nullptr && !plan_.writesFiles()) return;
    const OpenedFile opened = openFile(path, plan_.options.dryRun || !plan_.writesFiles());
    if (!opened.tag) {
        if (plan_.sourceInFile != nullptr) job.failure = opened.failure;
        return failTargets(job, opened.failure);
    }
    if (plan_.sourceInFile != nullptr) readSource(*opened.tag, job);
    if (isToBeWritten(plan_, job) && plan_.writesFiles()) write(path, *opened.tag, job);
}

void SyncFiles::readSource(const ZALTag& tag, SyncJob& job) const {
    // To a folder full of files a payload that cannot be read is not the same as having no cue points.
    const ZALDamageWatch watch;
    const CuePlace& source = *plan_.sourceInFile;
    job.cuePoints = plan_.carried(plan_.options.onlyTimes() ? source.read(tag) : source.readAll(tag));
    job.hasSource = !job.cuePoints.empty() || source.isSurelyEmpty(tag);
    if (job.cuePoints.empty() && watch.firstDamage()) {
        job.failure = fmt::format("its cue points of {} cannot be read: {}", source.name,
                                  printable(*watch.firstDamage()));
    }
}

// Changes the tag in memory. Whether that is a change at all is seen by reading before and after.
bool SyncFiles::change(ZALTag& tag, SyncJob& job) const {
    bool anyChange = false;
    for (std::size_t i = 0; i < plan_.targets.size(); ++i) {
        const CuePlace* place = plan_.targets[i].inFile;
        if (place == nullptr) continue;
        SyncFileResult& result = job.results[i];
        result.before = place->readAll(tag);
        CuePoints asked = job.cuePoints;
        bool keepsTimes = plan_.options.keepTimes;
        if (plan_.options.merge) {
            asked = ZALMergedCuePoints(result.before, place->asWritten(tag, asked, keepsTimes));
            keepsTimes = true;
        }
        result.plan = place->plan(tag, asked, keepsTimes);
        const std::size_t held = asked.size() - result.plan.count(&ZALCueOutcome::isLeftOut);
        if (plan_.options.merge && held == result.before.size()) {  // nothing is added
            result.after = result.before;
            continue;
        }
        place->write(tag, asked, keepsTimes);
        result.after = place->readAll(tag);
        result.changed = !areWhollyEqual(result.before, result.after);
        anyChange = anyChange || result.changed;
    }
    return anyChange;
}

void SyncFiles::write(const std::string& path, ZALTag& tag, SyncJob& job) const {
    std::vector<ZALNullableData> before = tag.cuePayloads();
    if (!change(tag, job)) return;
    const bool isDry = plan_.options.dryRun;
    if (isDry ? ::access(path.c_str(), W_OK) != 0 : tag.readOnly()) return failTargets(job, readOnlyReason);
    if (isDry) return;
    const std::string failure = save(path, tag, std::move(before));
    if (!failure.empty()) failTargets(job, failure);
}

std::string SyncFiles::save(const std::string& path, ZALTag& tag,
                            std::vector<ZALNullableData>&& before) const {
    if (journal_ != nullptr) {
        const std::string reason =
            journal_->note(WrittenTag{collectionPath(path), std::move(before), tag.cuePayloads()});
        if (!reason.empty()) return "was not written, since the way back could not be noted: " + reason;
    }
    return saveFile(tag);
}

void SyncFiles::failTargets(SyncJob& job, const std::string& reason) const {
    for (std::size_t i = 0; i < plan_.targets.size(); ++i) {
        if (plan_.targets[i].inFile != nullptr) job.results[i].failure = reason;
    }
}
