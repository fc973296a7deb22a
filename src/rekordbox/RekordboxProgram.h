#pragma once

#include "collection/CollectionProgram.h"

#include <zaltag/rekordbox/ZALRekordboxPlaylistFolder.h>

namespace zal {

const CollectionProgram& rekordboxProgram();

struct RekordboxContents : CollectionContents {
    std::shared_ptr<ZALRekordboxPlaylistFolder> playlist;
};

/// Calls a function for every track element of a document, in order.
template <typename Function>
void forEachTrackElement(const XMLDocument& document, Function function) {
    static constexpr const char* path[] = {"COLLECTION", "TRACK"};
    forEachElement(document.root("DJ_PLAYLISTS"), path, function);
}

/// Sets the attributes that tell who wrote a document, and when.
void stampRoot(XMLElement root);

}  // namespace zal
