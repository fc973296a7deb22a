#pragma once

#include "collection/CollectionWriter.h"

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

/// Where each group of the candidates ends: as few files of at most 5000 as possible, evenly filled.
std::vector<std::size_t> importGroupEnds(std::size_t candidates);

/// Writes the content of one import file, a collection of its own, track by track: as they stand in the file,
/// but in the mode `everyTrackWithCues` as a save would write them. False when the sink gave up or a track
/// could not be read.
bool writeImportFile(ElementReader& reader, std::span<const TrackChange> tracks,
                     const std::string& playlistName, const ChunkSink& sink);

/// Writes one import file. False when it was not written, with a log line.
bool saveSingleSplitXmlFile(ElementReader& reader, std::span<const TrackChange> tracks,
                            const std::string& filename, const std::string& playlistName);

}  // namespace zal
