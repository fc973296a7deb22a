#pragma once

#include "Collections.h"

#include <zaltag/collection/ZALCollectionTrack.h>

#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

/// How audio files here, or the tracks of another collection, find the tracks of a collection that may have
/// been made on another machine. A track is given away once at most. Where two files or two tracks come into
/// question, there is no match.
class Matching {
  public:
    struct Match {
        std::string key;            ///< the path by which the collection knows it; empty without a track
        const char* how = nullptr;  ///< "path", "map", "case" or "relocated"; null without a track
        std::string reason;         ///< why what has candidates got none of them
    };
    /// Whether the paths are those of files here: a track whose own file is here is then that file's alone.
    enum class Of { files, tracks };

    /// Looks for the tracks of these paths: first by the very path, then by the maps of useCollections() and
    /// the forms that drives and volumes take, then by letter case and Unicode normalization. The collection
    /// and the paths, which are absolute, outlive this.
    Matching(const Collection& collection, const std::vector<std::string>& paths, Of of);

    /// Looks for the tracks of what is left by what is known of it: its name and size, then its title, artist
    /// and length. The function describes the path of a number, with title, artist and length when asked.
    using Describe = std::function<ZALTrackIdentity(std::size_t number, bool withTags)>;
    void relocate(const Describe& describe);

    const Match& of(std::size_t number) const { return matches_[number]; }
    std::size_t count() const;

  private:
    enum Rank { exact, mapped, folded, moved };
    struct Candidate {
        std::uint32_t number;  // of the path
        Rank rank;
        std::string path;        // of the track
        std::string decomposed;  // when it is another one
        const std::string& key() const { return decomposed.empty() ? path : decomposed; }
    };
    struct Owner {
        std::uint32_t number;
        bool isShared;
    };
    using Owners = std::unordered_map<std::string_view, Owner>;

    void findCandidates(std::size_t begin, std::size_t end);
    void add(std::size_t number, const std::string& wanted, const std::string& track);
    void take(Rank rank, const char* how);
    Owners ownersOf(Rank rank) const;
    void decide(const Candidate* begin, const Candidate* end, Rank rank, const Owners& owners,
                const char* how);
    bool isOpen(std::size_t number) const;
    bool isFree(const std::string& track, std::size_t number) const;
    bool isFile(const std::string& path) const;

    const Collection& collection_;
    const std::vector<std::string>& paths_;
    const Of of_;
    std::vector<Match> matches_;
    std::vector<Candidate> candidates_;  // those of one number together
    std::unordered_set<std::string> taken_;
    mutable std::unordered_map<std::string, bool> folders_;  // whether they are here
};

/// The path by which a collection knows one file, as Matching finds it; the file's own path without a track.
std::string collectionKey(const Collection& collection, const std::string& file);
