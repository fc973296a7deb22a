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
    const XMLElement root = document.root("DJ_PLAYLISTS");
    for (auto all = root.firstChild("COLLECTION"); all; all = all.next("COLLECTION")) {
        for (auto track = all.firstChild("TRACK"); track; track = track.next("TRACK")) {
            function(track);
        }
    }
}

/// Sets the attributes that tell who wrote a document, and when.
void stampRoot(XMLElement root);

}  // namespace zal
