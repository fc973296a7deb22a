#include "traktor/TrackLocation.h"

#include "collection/CollectionProgram.h"

#include <string_view>

namespace zal {

namespace {

std::string replaced(std::string_view text, std::string_view part, char by) {
    std::string out;
    for (auto at = text.find(part); at != std::string_view::npos; at = text.find(part)) {
        out.append(text.substr(0, at)) += by;
        text.remove_prefix(at + part.size());
    }
    return out.append(text);
}

// A name's own colon is written as two slashes.
std::string withColons(std::string_view text) {
    return replaced(text, "//", ':');
}

}  // namespace

std::string keyOf(const TraktorLocation& location) {
    return location.volume.value_or("") + location.folder.value_or("") + location.file.value_or("");
}

ZALNullableString pathOf(const TraktorLocation& location, const std::string& bootVolume) {
    if (!location.folder || !location.file) return std::nullopt;
    // The separators come first, so that one behind another is a colon, too, as the files have it.
    std::string folder = withColons(replaced(*location.folder, "/:", '/'));
    if (location.volume && *location.volume != bootVolume) {
        folder = joinPaths(joinPaths("/Volumes", *location.volume), folder);
    }
    return joinPaths(folder, withColons(*location.file));
}

}  // namespace zal
