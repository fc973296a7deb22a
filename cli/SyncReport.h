#pragma once

#include "CueText.h"
#include "Output.h"
#include "SyncPlan.h"

#include <string>

/// What is reported of one file and one target.
struct SyncRow {
    std::string path;
    std::string target;
    std::string status;
    const char* match = nullptr;  ///< how the collection's track was found
    std::string reason = {};
    CuePoints cues = {};
    CuePoints before = {};
    CuePoints kept = {};   ///< of the track, beside those that are replaced
    ZALCuePlan plan = {};  ///< what becomes of the cue points that are asked for
};

/// What `sync` prints: lines for a person, or JSON with the lines on standard error.
class SyncReport {
  public:
    explicit SyncReport(const SyncOptions& options) : options_(options), output_(options.json) {}

    Output& output() { return output_; }
    /// Whether rows are wanted with their cue points; they take time.
    bool wantsCues() const { return options_.json || options_.dryRun; }

    /// A row of the JSON document; nothing otherwise.
    void add(SyncRow&& row);
    /// The line of a failure, without a row.
    void fail(const std::string& path, const std::string& reason);
    /// In the dry run, and when asked, the line of a file that a collection does not hold.
    void nameMissing(const std::string& path, const Collection& collection);
    /// In the dry run the lines of what a row changes.
    void sayChanges(const SyncRow& row);
    /// Names what a target has no room for.
    void sayLeft(const SyncRow& row);

  private:
    const SyncOptions& options_;
    Output output_;
};
