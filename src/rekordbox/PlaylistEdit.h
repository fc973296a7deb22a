#pragma once

#include "collection/CollectionWriter.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zal {

/// What a save writes to have tracks listed in a playlist right below the root of the playlists, both made on
/// demand. Null when they are in it already, and when it, or the root, cannot list tracks by their ids.
std::optional<FrameEdit> playlistEdit(ElementReader& reader, const std::string& playlistName,
                                      const std::vector<std::uint32_t>& numbers);

/// The ids of the tracks that this playlist lists, ascending; none when there is no such playlist, or one by
/// locations.
std::vector<std::uint64_t> idsInPlaylist(ElementReader& reader, const std::string& playlistName);

}  // namespace zal
