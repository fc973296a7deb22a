#include <zaltag/traktor/ZALTraktorPlaylist.h>

#include "collection/CollectionProgram.h"
#include "platform/Log.h"

void ZALTraktorPlaylist::forEachKey(const zal::XMLElement& element,
                                    const std::function<void(const char* key)>& function) {
    static constexpr const char* path[] = {"PLAYLIST", "ENTRY", "PRIMARYKEY"};
    zal::forEachElement(element, path, [&](const zal::XMLElement& primary) {
        if (primary.attributeText("TYPE") == "TRACK") function(primary.attribute("KEY"));
    });
}

std::shared_ptr<const ZALTraktorPlaylist> ZALTraktorPlaylist::initWithXMLElement(
    const zal::XMLElement& element, const ZALTraktorTrackMap& trackMap) {
    if (!element) return nullptr;
    const auto playlist = std::make_shared<ZALTraktorPlaylist>();
    if (const char* name = element.attribute("NAME")) playlist->name_ = name;
    forEachKey(element, [&](const char* key) {
        const auto found = key == nullptr ? trackMap.end() : trackMap.find(key);
        if (found != trackMap.end()) return playlist->tracks_.push_back(found->second);
        zal::logf("failed to find Traktor playlist track for key: {}", key == nullptr ? "(null)" : key);
    });
    return playlist;
}
