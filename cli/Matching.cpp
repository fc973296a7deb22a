#include "Matching.h"

#include "Output.h"
#include "PathMaps.h"
#include "Relocation.h"

#include <zaltag/collection/ZALCollectionPath.h>

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <utility>

namespace fs = std::filesystem;

namespace {

constexpr std::size_t atOnce = 2048;  // paths that the collection is asked for

std::string_view behindVolume(const std::string& common) {
    return std::string_view(common).substr(ZALVolumeOfPath(common).size());
}

bool areOfOneVolume(const std::string& one, const std::string& other) {
    const std::string_view first = ZALVolumeOfPath(one);
    const std::string_view second = ZALVolumeOfPath(other);
    return first.empty() || second.empty() || first == second ||
           ZALDecomposedPath(first) == ZALDecomposedPath(second);
}

bool isASCII(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool isSameFile(const std::string& one, const std::string& other) {
    std::error_code ignored;
    return fs::equivalent(one, other, ignored);
}

}  // namespace

Matching::Matching(const Collection& collection, const std::vector<std::string>& paths, Of of)
    : collection_(collection), paths_(paths), of_(of), matches_(paths.size()) {
    if (collection.database()->trackCount() == 0) return;
    for (std::size_t begin = 0; begin < paths.size(); begin += atOnce) {
        findCandidates(begin, std::min(begin + atOnce, paths.size()));
    }
    take(exact, "path");
    take(mapped, "map");
    take(folded, "case");
    candidates_ = {};
}

std::size_t Matching::count() const {
    return static_cast<std::size_t>(std::count_if(matches_.begin(), matches_.end(),
                                                  [](const Match& match) { return match.how != nullptr; }));
}

void Matching::findCandidates(std::size_t begin, std::size_t end) {
    std::vector<std::string> wanted;
    std::vector<std::size_t> numbers;
    for (std::size_t number = begin; number < end; ++number) {
        // A path of another machine is no path here, and most of those that are have one spelling alone.
        if (isASCII(paths_[number]) && collection_.database()->mayHold(paths_[number])) {
            candidates_.push_back({static_cast<std::uint32_t>(number), exact, paths_[number], {}});
            continue;
        }
        for (std::string& path : pathsThere(paths_[number], of_ == Of::tracks)) {
            wanted.push_back(std::move(path));
            numbers.push_back(number);
        }
    }
    const auto found = collection_.database()->pathsLike(wanted);
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        for (const std::string& track : found[i]) {
            add(numbers[i], wanted[i], track);
        }
    }
}

void Matching::add(std::size_t number, const std::string& wanted, const std::string& track) {
    std::string decomposed = ZALDecomposedPath(track);
    if (decomposed == track) decomposed.clear();
    const std::string& key = decomposed.empty() ? track : decomposed;
    Rank rank = exact;
    if (track != paths_[number] && key != ZALDecomposedPath(paths_[number])) {
        const std::string there = ZALCommonPath(key);
        const std::string here = ZALCommonPath(wanted);
        if (!areOfOneVolume(there, here)) return;
        rank = behindVolume(there) == ZALDecomposedPath(behindVolume(here)) ? mapped : folded;
    }
    candidates_.push_back({static_cast<std::uint32_t>(number), rank, track, std::move(decomposed)});
}

bool Matching::isOpen(std::size_t number) const {
    return matches_[number].how == nullptr && matches_[number].reason.empty();
}

// Gives each path the one track that comes into question for it and for no other path.
void Matching::take(Rank rank, const char* how) {
    std::erase_if(candidates_, [&](const Candidate& one) {
        return one.rank == rank && (!isOpen(one.number) || taken_.contains(one.key()) ||
                                    (rank != exact && !isFree(one.path, one.number)));
    });
    const Owners owners = ownersOf(rank);
    const Candidate* const all = candidates_.data();
    for (std::size_t begin = 0, end = 0; begin < candidates_.size(); begin = end) {
        while (end < candidates_.size() && candidates_[end].number == candidates_[begin].number) {
            ++end;
        }
        decide(all + begin, all + end, rank, owners, how);
    }
}

// A track whose path is a file's to the letter is that file's, whatever else has another form of it.
Matching::Owners Matching::ownersOf(Rank rank) const {
    Owners owners;
    owners.reserve(candidates_.size());
    for (const Candidate& one : candidates_) {
        if (one.rank != rank) continue;
        const auto [owner, isNew] = owners.try_emplace(one.key(), Owner{one.number, false});
        if (isNew || owner->second.number == one.number) continue;
        const bool wasLiteral = paths_[owner->second.number] == one.path;
        const bool isLiteral = paths_[one.number] == one.path;
        owner->second.isShared = !wasLiteral && !isLiteral;
        if (isLiteral) owner->second.number = one.number;
    }
    return owners;
}

void Matching::decide(const Candidate* begin, const Candidate* end, Rank rank, const Owners& owners,
                      const char* how) {
    const Candidate* only = nullptr;
    for (const Candidate* one = begin; one != end; ++one) {
        if (one->rank != rank) continue;
        if (only != nullptr && only->key() != one->key()) {
            matches_[begin->number].reason =
                fmt::format("two entries of the {} collection stand for it: '{}' and '{}'", collection_.name,
                            printable(only->path), printable(one->path));
            return;
        }
        only = one;
    }
    if (only == nullptr) return;
    const Owner& owner = owners.at(only->key());
    Match& match = matches_[only->number];
    // Where only the Unicode form differs, the collection itself takes one file for the other.
    const bool isAnothers =
        owner.isShared || owner.number != only->number || !isFree(only->path, only->number);
    if (isAnothers) {
        match.reason = fmt::format("the {} collection knows it and another file as one, '{}'",
                                   collection_.name, printable(only->path));
        return;
    }
    match = {only->key(), how, {}};
    taken_.insert(only->key());
}

// Whether a track may go to another path than its own: not when its own file is here.
bool Matching::isFree(const std::string& track, std::size_t number) const {
    if (of_ == Of::tracks || track == paths_[number]) return true;
    const std::vector<std::string> places = pathsHere(track);
    return std::none_of(places.begin(), places.end(), [&](const std::string& place) {
        return place != paths_[number] && isFile(place) && !isSameFile(place, paths_[number]);
    });
}

// Most tracks of another machine lie in few folders, none of which is here.
bool Matching::isFile(const std::string& path) const {
    std::error_code ignored;
    const std::string folder = path.substr(0, path.rfind('/'));
    auto known = folders_.find(folder);
    if (known == folders_.end()) known = folders_.emplace(folder, fs::is_directory(folder, ignored)).first;
    return known->second && fs::is_regular_file(path, ignored);
}

void Matching::relocate(const Describe& describe) {
    const auto look = [&](bool byTags) {
        std::vector<RelocatedItem> items;
        for (std::size_t number = 0; number < paths_.size(); ++number) {
            if (isOpen(number)) items.push_back({number, describe(number, byTags)});
        }
        for (auto& [number, track] : relocated(collection_, items, byTags)) {
            std::string decomposed = ZALDecomposedPath(track);
            if (decomposed == track) decomposed.clear();
            candidates_.push_back(
                {static_cast<std::uint32_t>(number), moved, std::move(track), std::move(decomposed)});
        }
        take(moved, "relocated");
        candidates_.clear();
    };
    look(false);
    look(true);
}

std::string collectionKey(const Collection& collection, const std::string& file) {
    const std::vector<std::string> paths{collectionPath(file)};
    const Matching matching(collection, paths, Matching::Of::files);
    return matching.of(0).how != nullptr ? matching.of(0).key : paths.front();
}
