#pragma once

#include "CueText.h"
#include "Journal.h"
#include "SyncPlan.h"

#include <cstddef>
#include <string>
#include <vector>

/// What became of one file and one target in files.
struct SyncFileResult {
    bool changed = false;
    std::string failure;
    CuePoints before;
    CuePoints after;
    ZALCuePlan plan;  ///< what became of each cue point
};

/// What one file brought.
struct SyncJob {
    std::size_t number = 0;
    CuePoints cuePoints;
    double traktorOffset = 0;             ///< of an MP3 file, as ZALFirstFrame has it
    bool hasNoFrame = false;              ///< it is wanted and cannot be had
    bool hasSource = false;               ///< the source has the file, with cue points or surely without
    std::string failure;                  ///< of reading the source
    std::vector<SyncFileResult> results;  ///< one per target; empty ones for targets in collections
};

/// Whether a job asks anything of the targets.
bool isToBeWritten(const SyncPlan& plan, const SyncJob& job);

/// Reads the cue points of audio files and writes them there, on any thread, several files at once.
class SyncFiles {
  public:
    /// What is written is noted in the journal first, unless that is null.
    SyncFiles(const SyncPlan& plan, Journal* journal) : plan_(plan), journal_(journal) {}

    /// Opens a file, if any place is in it.
    void work(const std::string& path, SyncJob& job) const;

  private:
    void readSource(const ZALTag& tag, SyncJob& job) const;
    bool change(ZALTag& tag, SyncJob& job) const;
    void write(const std::string& path, ZALTag& tag, SyncJob& job) const;
    std::string save(const std::string& path, ZALTag& tag, std::vector<ZALNullableData>&& before) const;
    void failTargets(SyncJob& job, const std::string& reason) const;

    const SyncPlan& plan_;
    Journal* const journal_;
};
