#pragma once

#include "platform/XML.h"

#include <cstddef>
#include <cstdint>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace zal {

/// How many import files a batch deletes, and writes at most.
constexpr std::uint32_t maximalImportFiles = 100;

/// The path of an import file, the index counted from 0, beside the collection file.
std::string getPathForSplitXml(std::uint32_t index, const std::string& rekordboxDatabaseFile);
std::string getPlaylistNameForSplitXml(std::uint32_t index);

/// The tracks of a collection whose cue points go into import files: those with one of the ids, a mark, a
/// duration and a location, in the order of the collection.
std::vector<XMLElement> importCandidates(const XMLDocument& document, const std::set<std::int64_t>& ids);

/// Where each group of the candidates ends: as few files of at most 5000 as possible, evenly filled.
std::vector<std::size_t> importGroupEnds(std::size_t candidates);

/// Writes one import file, a collection of its own. A failure is one log line.
void saveSingleSplitXmlFile(std::span<const XMLElement> tracks, const std::string& filename,
                            const std::string& playlistName);

}  // namespace zal
