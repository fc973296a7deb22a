#pragma once

#include "collection/XML.h"
#include "collection/XMLMarkup.h"

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zal {

/// What a request changes in the text of a track's element.
struct TrackEdit {
    bool isChanged = false;       ///< the element is to be written
    std::size_t cues = 0;         ///< that the track has then
    std::vector<bool> isRemoved;  ///< of its marks, in the order of the file
    /// Of marks that stay, by their places there.
    std::map<std::size_t, std::vector<XMLAttributeEdit>> markAttributes;
    std::vector<std::string> added;            ///< new marks, behind the last one
    std::vector<XMLAttributeEdit> attributes;  ///< of the track itself
    std::string fileWithoutDate;               ///< as ZALCollectionTrack has it
    XMLStyle style;
};

/// The element with that edit: every character that the edit does not mean stays. `blank` is the white space
/// in front of the element.
std::string splicedTrack(std::string_view element, std::string_view blank, const char* markName,
                         const TrackEdit& edit);

/// The element with new children as the last ones, each behind the white space that stands in front of the
/// last one now, or of the element itself when it has none.
std::string withChildren(std::string_view element, std::string_view blank, const char* indent,
                         std::span<const std::string> children);

}  // namespace zal
