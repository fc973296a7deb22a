#pragma once

#include "Collections.h"
#include "CuePlaces.h"
#include "CueText.h"

#include <cstddef>
#include <string>
#include <vector>

/// What a call of `sync` asks for.
struct SyncOptions {
    std::vector<std::string> paths;
    std::string source;
    std::vector<std::string> targets;
    CollectionOptions collections;
    bool all = false;  ///< every track of the source collection, not the files below the paths
    bool relocate = false;
    bool keepTimes = false;
    std::string only;           ///< "times": times and names are carried, nothing else
    bool decoderOffset = true;  ///< times of MP3 files are moved between Traktor and Rekordbox
    double offset = 0;          ///< milliseconds, added to every time
    bool asMemory = false;      ///< Rekordbox's hot cues are memory cues, too
    bool merge = false;         ///< targets keep their cue points and get those they lack
    bool forceDates = false;
    bool clearEmpty = false;
    bool inPlace = false;
    bool backup = true;
    std::string output;  ///< the new collection
    bool dryRun = false;
    bool verbose = false;
    bool json = false;
    unsigned jobs = 1;

    bool onlyTimes() const { return !only.empty(); }
};

/// Places that are lists of one thing in the library's view, in files or in a collection.
struct SyncTarget {
    std::string name;
    const CuePlace* inFile = nullptr;
    const CollectionPlace* inCollection = nullptr;
    ZALCueRequest request = {};  ///< of a collection's queue
    bool usable = true;

    std::size_t written = 0;
    std::size_t unchanged = 0;
    std::size_t notThere = 0;
    std::size_t newer = 0;
    std::size_t failed = 0;
    std::size_t withoutFrame = 0;  ///< MP3 files whose times may be a frame apart
    CueLosses losses = {};
};

/// From where to where, by a call's options. Throws UsageError for what does not go together.
struct SyncPlan {
    explicit SyncPlan(const SyncOptions& asked);

    const SyncOptions& options;
    const CuePlace* sourceInFile;
    const CollectionPlace* sourceInCollection;
    std::vector<SyncTarget> targets;

    bool writesFiles() const;
    /// Cue points of the source as the targets are asked for them, but for the times of a program's decoder.
    CuePoints carried(const CuePoints& cuePoints) const;
    /// By what factor of ZALFirstFrame::traktorOffset() a collection's times are later than the source's: 1,
    /// -1 or 0.
    int decoderShift(const SyncTarget& target) const;
    /// The options for the collections; with --output, the new one is used in the place of the old one,
    /// which `replaced` becomes.
    CollectionOptions collections(std::string& replaced) const;
};
