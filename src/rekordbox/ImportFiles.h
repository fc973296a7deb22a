#pragma once

#include "collection/CollectionIndex.h"
#include "platform/FileReplacement.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace zal {

/// How many import files a batch deletes, and writes at most.
constexpr std::uint32_t maximalImportFiles = 100;

/// The path of an import file, the index counted from 0, beside the collection file.
std::string getPathForSplitXml(std::uint32_t index, const std::string& rekordboxDatabaseFile);
std::string getPlaylistNameForSplitXml(std::uint32_t index);

/// True for a track that can go into an import file: one with a mark, a duration and a location.
bool isImportCandidate(const IndexedTrack& track);

/// Where each group of the candidates ends: as few files of at most 5000 as possible, evenly filled.
std::vector<std::size_t> importGroupEnds(std::size_t candidates);

/// Writes the content of one import file, a collection of its own, track by track. False when the sink gave up or
/// a track could not be read.
bool writeImportFile(ElementReader& reader, std::span<const std::uint32_t> tracks,
                     const std::string& playlistName, const ChunkSink& sink);

/// Writes one import file. False when it was not written, with a log line.
bool saveSingleSplitXmlFile(ElementReader& reader, std::span<const std::uint32_t> tracks,
                            const std::string& filename, const std::string& playlistName);

}  // namespace zal
