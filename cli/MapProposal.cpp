#include "MapProposal.h"

#include "Output.h"

#include <zaltag/collection/ZALCollectionPath.h>
#include <zaltag/collection/ZALCollectionTrack.h>

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <unordered_map>

namespace {

constexpr std::size_t mostProposals = 3;

struct Split {
    std::string_view folder;
    std::string_view name;
};

Split splitAtName(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    if (slash == path.npos) return {{}, path};
    return {path.substr(0, slash), path.substr(slash + 1)};
}

std::string nameOf(const std::string& path) {
    return ZALLoosePath(splitAtName(path).name);
}

// What stands in front of the folders that two paths have in common at their ends.
std::pair<std::string, std::string> beginnings(std::string_view there, std::string_view here) {
    for (;;) {
        const Split one = splitAtName(there);
        const Split other = splitAtName(here);
        const bool isSame = !one.folder.empty() && !other.folder.empty() && !one.name.empty() &&
                            ZALLoosePath(one.name) == ZALLoosePath(other.name);
        if (!isSame) return {std::string(there), std::string(here)};
        there = one.folder;
        here = other.folder;
    }
}

// By the number of tracks that speak for it, the most first.
using Votes = std::vector<std::pair<std::size_t, std::pair<std::string, std::string>>>;

Votes votesOf(const Collection& collection, const std::vector<std::string>& paths) {
    std::unordered_map<std::string, const std::string*> byName;  // null for a name that two files have
    for (const std::string& path : paths) {
        const auto [named, isNew] = byName.try_emplace(nameOf(path), &path);
        if (!isNew) named->second = nullptr;
    }
    std::map<std::pair<std::string, std::string>, std::size_t> counts;
    collection.database()->forEachIdentity([&](const ZALTrackIdentity& track) {
        if (!track.path) return;
        const std::string there = ZALCommonPath(*track.path);
        const auto named = byName.find(nameOf(there));
        if (named == byName.end() || named->second == nullptr) return;
        const auto both = beginnings(there, ZALCommonPath(*named->second));
        if (both.first != both.second) ++counts[both];
    });
    Votes votes;
    for (const auto& [both, count] : counts) {
        votes.emplace_back(count, both);
    }
    std::stable_sort(votes.begin(), votes.end(),
                     [](const auto& one, const auto& other) { return one.first > other.first; });
    return votes;
}

std::string quoted(const std::string& text) {
    std::string out = "'";
    for (const char c : printable(text)) {
        out += c == '\'' ? "'\\''" : std::string(1, c);
    }
    return out + "'";
}

}  // namespace

std::string proposedMaps(const Collection& collection, const std::vector<std::string>& paths) {
    std::string folders;
    std::string options;
    const Votes votes = votesOf(collection, paths);
    for (std::size_t i = 0; i < votes.size() && i < mostProposals; ++i) {
        const auto& [count, both] = votes[i];
        if (count * 10 < votes.front().first) break;  // more likely names that happen to be the same
        folders += (folders.empty() ? "" : " and ") + printable(both.first);
        options += " --map " + quoted(both.first + "=" + both.second);
    }
    if (options.empty()) return {};
    return fmt::format("the tracks of the {} collection lie below {}; try{}", collection.name, folders,
                       options);
}
