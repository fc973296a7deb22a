#pragma once

#include "Collections.h"

#include <set>
#include <string>
#include <vector>

/// How the audio files here find the tracks of a collection, which may have been made on another machine.
class Matching {
  public:
    struct Match {
        std::string key;  ///< the path by which the collection knows the file; empty without a track
        const char* how = nullptr;  ///< "path", "map" or "case"; null without a track
        std::string reason;         ///< why a file that has candidates got none of them
    };

    /// Looks for the tracks of these files, each of which a track is given to once at most: first by the very
    /// path, then by the maps of useCollections() and the forms that paths of Windows and volumes take, then
    /// by paths that differ in letter case or Unicode normalization alone. Where two files or two tracks come
    /// into question, there is no match.
    Matching(const Collection& collection, const std::vector<std::string>& files);

    const Match& of(std::size_t file) const { return matches_[file]; }
    std::size_t count() const;
    /// What to try where not one file matched; empty when nothing is known.
    std::string proposal(const std::vector<std::string>& files) const;

  private:
    struct Candidate {
        std::size_t file;
        std::string key;
        std::string literal;
    };

    void matchByPath();
    void matchByMap();
    void matchByCase();
    void take(std::vector<Candidate>&& candidates, const char* how);
    std::vector<std::string> elsewhere(const std::string& path) const;
    bool hasOwnFile(const ZALCollectionTrack& track) const;
    const std::vector<std::string>& sample() const;
    const std::vector<std::string>& volumes() const;

    const Collection& collection_;
    std::vector<std::string> paths_;  // of the files, as collections know them
    std::vector<Match> matches_;
    std::set<std::string> taken_;  // by their index keys
    mutable std::vector<std::string> sample_;
    mutable std::vector<std::string> volumes_;
    mutable bool isSampled_ = false;
};

/// The path by which a collection knows one file, as Matching finds it; the file's own path without a track.
std::string collectionKey(const Collection& collection, const std::string& file);
