#pragma once

#include "Journal.h"
#include "Matching.h"
#include "SyncFiles.h"
#include "SyncReport.h"

#include <map>
#include <string>
#include <vector>

/// What is asked of collections. All requests are handed over at the end, so that each is written once.
class SyncCollections {
  public:
    SyncCollections(const SyncPlan& plan, SyncReport& report, Journal& journal)
        : plan_(plan), report_(report), journal_(journal) {}

    /// Takes what a job asks of a target whose collection has a track for it or not.
    void take(const std::string& path, const SyncJob& job, SyncTarget& target, const Matching::Match& match);
    /// Writes the collections, each with a copy of what it was before, and reports the requests.
    void save();
    /// `file` begins as a copy of another collection, which is left alone. The reason why not, or an empty
    /// text.
    std::string makeNew(const std::string& file, const std::string& original, const Collection& collection);

  private:
    struct Request {
        SyncTarget* target;
        std::string key;
        CuePoints cuePoints;
        ZALCueRequest request;
        bool isUnchanged;
        SyncRow row;
    };

    void fail(SyncRow&& row, std::size_t& counter);
    void report(Request& request, bool isSaved);
    std::string saveWithCopy(const Collection& collection);
    std::string keepCopy(WrittenFile& written);
    void noteImports(const std::map<std::string, std::string>& before, const std::string& collection);

    const SyncPlan& plan_;
    SyncReport& report_;
    Journal& journal_;
    std::vector<Request> requests_;
    std::map<std::string, WrittenFile> made_;  // new collections
};

/// The import files beside a Rekordbox collection.
std::vector<std::string> importFiles(const std::string& collection);
