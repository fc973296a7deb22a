#include <zaltag/traktor/ZALTraktorPlaylist.h>

#include "collection/CollectionProgram.h"
#include "platform/Log.h"

#include <algorithm>
#include <iterator>

std::shared_ptr<const ZALTraktorPlaylist> ZALTraktorPlaylist::initWithXMLElement(
    const zal::XMLElement& element, const ZALTraktorTrackMap& trackMap) {
    if (!element) return nullptr;
    const auto playlist = std::make_shared<ZALTraktorPlaylist>();
    if (const char* name = element.attribute("NAME")) playlist->name_ = name;
    static constexpr const char* path[] = {"PLAYLIST", "ENTRY", "PRIMARYKEY"};
    zal::forEachElement(element, path, [&](const zal::XMLElement& primary) {
        if (primary.attributeText("TYPE") != "TRACK") return;
        const char* key = primary.attribute("KEY");
        const auto found = key == nullptr ? trackMap.end() : trackMap.find(key);
        if (found != trackMap.end()) return playlist->tracks_.push_back(found->second);
        zal::logf("failed to find Traktor playlist track for key: {}", key == nullptr ? "(null)" : key);
    });
    return playlist;
}

std::shared_ptr<const ZALTraktorPlaylist> ZALTraktorPlaylist::copy(const TrackCopy& copyOf) const {
    const auto made = std::make_shared<ZALTraktorPlaylist>();
    made->name_ = name_;
    std::transform(tracks_.begin(), tracks_.end(), std::back_inserter(made->tracks_), copyOf);
    return made;
}
