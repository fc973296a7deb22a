#include "Matching.h"

#include "Assignments.h"
#include "Files.h"
#include "Output.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>

namespace fs = std::filesystem;

namespace {

constexpr std::size_t sampleSize = 2000;
constexpr std::string_view volumesFolder = "/Volumes/";

bool isDrive(std::string_view text) {
    return text.size() >= 2 && std::isalpha(static_cast<unsigned char>(text[0])) != 0 && text[1] == ':' &&
           (text.size() == 2 || text[2] == '/' || text[2] == '\\');
}

// One form for "C:\Music", "C:/Music", "/C:/Music" and "/Volumes/C:/Music": the second. Other paths stay.
std::string commonForm(std::string_view path) {
    std::string_view text = path;
    if (text.starts_with(volumesFolder) && isDrive(text.substr(volumesFolder.size()))) {
        text.remove_prefix(volumesFolder.size());
    } else if (text.starts_with('/') && isDrive(text.substr(1))) {
        text.remove_prefix(1);
    }
    std::string common(isDrive(text) ? text : path);
    if (isDrive(common)) {
        std::replace(common.begin(), common.end(), '\\', '/');
        common[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(common[0])));
    }
    while (common.size() > 1 && common.ends_with('/')) {
        common.pop_back();
    }
    return common;
}

// What stands behind a folder in a path, with its slash; null when the path is not below it.
ZALNullableString below(const std::string& folder, const std::string& path) {
    const std::string_view bare = folder == "/" ? std::string_view() : std::string_view(folder);
    const bool isBelow = path.starts_with(bare) && path.size() > bare.size() && path[bare.size()] == '/';
    return isBelow ? ZALNullableString(path.substr(bare.size())) : std::nullopt;
}

// A path without the volume in front of it.
std::string withoutVolume(const std::string& path) {
    if (!path.starts_with(volumesFolder)) return path;
    const std::size_t slash = path.find('/', volumesFolder.size());
    return slash == std::string::npos ? path : path.substr(slash);
}

bool isFile(const std::string& path) {
    std::error_code ignored;
    return fs::is_regular_file(path, ignored);
}

}  // namespace

Matching::Matching(const Collection& collection, const std::vector<std::string>& files)
    : collection_(collection), matches_(files.size()) {
    for (const std::string& file : files) {
        paths_.push_back(collectionPath(file));
    }
    matchByPath();
    matchByMap();
    matchByCase();
}

std::size_t Matching::count() const {
    return static_cast<std::size_t>(std::count_if(matches_.begin(), matches_.end(),
                                                  [](const Match& match) { return match.how != nullptr; }));
}

void Matching::matchByPath() {
    std::vector<Candidate> found;
    for (std::size_t i = 0; i < paths_.size(); ++i) {
        const auto track = collection_.track(paths_[i]);
        if (track) found.push_back({i, std::string(track->indexKey()), track->path().value_or("")});
    }
    take(std::move(found), "path");
}

void Matching::matchByMap() {
    std::vector<Candidate> found;
    for (std::size_t i = 0; i < paths_.size(); ++i) {
        if (matches_[i].how != nullptr || !matches_[i].reason.empty()) continue;
        for (const std::string& path : elsewhere(paths_[i])) {
            const auto track = collection_.track(path);
            if (track) found.push_back({i, std::string(track->indexKey()), track->path().value_or("")});
        }
    }
    take(std::move(found), "map");
}

void Matching::matchByCase() {
    std::vector<Candidate> found;
    for (std::size_t i = 0; i < paths_.size(); ++i) {
        if (matches_[i].how != nullptr || !matches_[i].reason.empty()) continue;
        std::vector<std::string> paths = elsewhere(paths_[i]);
        paths.push_back(paths_[i]);
        for (const std::string& path : paths) {
            for (const auto& track : collection_.database()->tracksLike(path)) {
                if (taken_.contains(std::string(track->indexKey())) || hasOwnFile(*track)) continue;
                found.push_back({i, std::string(track->indexKey()), track->path().value_or("")});
            }
        }
    }
    take(std::move(found), "case");
}

// Gives each file the one track that comes into question for it and for no other file. A track whose path is
// the file's to the letter is that file's.
void Matching::take(std::vector<Candidate>&& candidates, const char* how) {
    std::map<std::size_t, std::set<std::string>> ofFile;
    std::map<std::string, std::set<std::size_t>> ofTrack;
    for (const Candidate& one : candidates) {
        if (taken_.contains(one.key)) continue;
        ofFile[one.file].insert(one.key);
        ofTrack[one.key].insert(one.file);
    }
    for (const Candidate& one : candidates) {
        if (one.literal == paths_[one.file]) ofTrack[one.key] = {one.file};
    }
    for (const auto& [file, keys] : ofFile) {
        Match& match = matches_[file];
        const std::set<std::size_t>& files = ofTrack[*keys.begin()];
        if (keys.size() > 1) {
            match.reason = fmt::format("two entries of the {} collection stand for it: '{}' and '{}'",
                                       collection_.name, printable(*keys.begin()), printable(*keys.rbegin()));
        } else if (files.size() > 1 || *files.begin() != file) {
            match.reason =
                fmt::format("the {} collection knows it and another file as one", collection_.name);
        } else {
            match = {*keys.begin(), how, {}};
            taken_.insert(*keys.begin());
        }
    }
}

// The paths that a file may have in the collection besides its own.
std::vector<std::string> Matching::elsewhere(const std::string& path) const {
    std::vector<std::string> commons{commonForm(path)};
    for (const PathMap& map : pathMaps()) {
        if (const auto rest = below(map.to, path))
            commons.push_back((map.from == "/" ? "" : map.from) + *rest);
    }
    std::vector<std::string> all;
    for (const std::string& common : commons) {
        if (isDrive(common)) {
            for (const char* begin : {"/", "/Volumes/", ""}) {
                all.push_back(begin + common);
            }
            continue;
        }
        if (common != path) all.push_back(common);
        for (const std::string& volume : volumes()) {
            if (!common.starts_with(volumesFolder)) all.push_back(volume + common);
        }
    }
    return all;
}

// Whether the file that an entry names is here: it is that file's, whatever else looks like it.
bool Matching::hasOwnFile(const ZALCollectionTrack& track) const {
    const std::string path = track.path().value_or("");
    if (isFile(path)) return true;
    const std::string common = commonForm(path);
    return std::any_of(pathMaps().begin(), pathMaps().end(), [&](const PathMap& map) {
        auto rest = below(map.from, common);
        if (!rest) rest = below(map.from, withoutVolume(common));
        return rest && isFile(map.to + *rest);
    });
}

// Paths of the collection's first tracks.
const std::vector<std::string>& Matching::sample() const {
    if (isSampled_) return sample_;
    isSampled_ = true;
    ZALCollectionCursor cursor = collection_.database()->tracksInOrder();
    while (sample_.size() < sampleSize) {
        const auto track = cursor.next();
        if (!track) break;
        if (track->path()) sample_.push_back(*track->path());
    }
    return sample_;
}

// The volumes in front of the collection's paths, without those that are drives of Windows.
const std::vector<std::string>& Matching::volumes() const {
    if (isSampled_) return volumes_;
    std::set<std::string> found;
    for (const std::string& path : sample()) {
        const std::string rest = withoutVolume(path);
        if (rest.size() < path.size() && !isDrive(commonForm(path)))
            found.insert(path.substr(0, path.size() - rest.size()));
    }
    volumes_.assign(found.begin(), found.end());
    return volumes_;
}

// What the paths of files and tracks of one name have in common at their ends is the same folder; the
// beginnings that most of them differ in are those to map.
std::string Matching::proposal(const std::vector<std::string>& files) const {
    std::map<std::string, std::vector<std::string>> byName;
    for (const std::string& file : files) {
        const fs::path path = collectionPath(file);
        byName[path.filename().string()].push_back(path.string());
    }
    std::map<std::pair<std::string, std::string>, std::size_t> votes;
    for (const std::string& track : sample()) {
        const std::string common = commonForm(track);
        const auto named = byName.find(common.substr(common.rfind('/') + 1));
        if (named == byName.end() || named->second.size() != 1) continue;
        fs::path from = common;
        fs::path to = named->second.front();
        while (from.has_filename() && from.filename() == to.filename() && from.has_relative_path()) {
            from = from.parent_path();
            to = to.parent_path();
        }
        ++votes[{from.string(), to.string()}];
    }
    const auto best = std::max_element(votes.begin(), votes.end(), [](const auto& one, const auto& other) {
        return one.second < other.second;
    });
    if (best == votes.end()) return {};
    const auto& [from, to] = best->first;
    return fmt::format("the tracks of the {} collection lie below {}; try --map '{}={}'", collection_.name,
                       printable(from), printable(from), printable(to));
}

std::string collectionKey(const Collection& collection, const std::string& file) {
    const Matching matching(collection, {file});
    return matching.of(0).how != nullptr ? matching.of(0).key : collectionPath(file);
}

PathMap pathMapOf(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0 || equals + 1 == text.size())
        throw UsageError(fmt::format("'{}' is not FROM=TO", printable(text)));
    return {commonForm(text.substr(0, equals)), commonForm(collectionPath(text.substr(equals + 1)))};
}
