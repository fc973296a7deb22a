#pragma once

#include "Collections.h"

#include <zaltag/collection/ZALCollectionTrack.h>

#include <string>
#include <utility>
#include <vector>

/// A file or track whose entry in a collection is looked for by what is known of it.
struct RelocatedItem {
    std::size_t number;
    ZALTrackIdentity identity;
};

/// The entries of a collection, by their paths, that come into question for items whose files were moved: of
/// the same file name and size, or, by tags, of the same title, artist and length within a second. In the
/// order of the items' numbers.
std::vector<std::pair<std::size_t, std::string>> relocated(const Collection& collection,
                                                           const std::vector<RelocatedItem>& items,
                                                           bool byTags);
