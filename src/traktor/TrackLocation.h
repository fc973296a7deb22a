#pragma once

#include <zaltag/base/ZALText.h>

#include <string>

namespace zal {

/// Where the collection says that a track is.
struct TraktorLocation {
    ZALNullableString volume;
    ZALNullableString folder;
    ZALNullableString file;
};

/// The parts one after the other: the key that playlists use.
std::string keyOf(const TraktorLocation& location);

/// The path in the file system; null without a folder or a file name.
ZALNullableString pathOf(const TraktorLocation& location, const std::string& bootVolume);

}  // namespace zal
