#pragma once

#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALText.h>
#include <zaltag/traktor/ZALTraktorTrack.h>

#include <functional>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace zal {
class XMLElement;
}

/// The tracks of a collection by their uniqueID; the last of several that have the same.
using ZALTraktorTrackMap = std::unordered_map<std::string_view, std::shared_ptr<const ZALTraktorTrack>>;

/// A playlist of the Traktor collection, to be read only. One that a database hands out is a copy, and so are
/// its tracks.
class ZALTraktorPlaylist {
  public:
    /// The playlist of a node. An entry whose track the map lacks is left out, with a log line.
    static std::shared_ptr<const ZALTraktorPlaylist> initWithXMLElement(const zal::XMLElement& element,
                                                                        const ZALTraktorTrackMap& trackMap);

    /// Null when the node has none.
    const ZALNullableString& name() const { return name_; }
    /// In the order of the playlist; a track that is listed twice is here twice.
    const std::vector<std::shared_ptr<const ZALTraktorTrack>>& tracks() const { return tracks_; }

    /// Calls a function with the key of every track that the node lists; null where an entry has none.
    static void forEachKey(const zal::XMLElement& element,
                           const std::function<void(const char* key)>& function);

  private:
    ZALNullableString name_;
    std::vector<std::shared_ptr<const ZALTraktorTrack>> tracks_;
};
