#include <zaltag/rekordbox/ZALRekordboxPlaylist.h>

#include "rekordbox/PlaylistNode.h"

#include <utility>

namespace {

constexpr const char* trackName = "TRACK";

}  // namespace

std::shared_ptr<ZALRekordboxPlaylist> ZALRekordboxPlaylist::rekordboxPlaylistWithName(std::string name) {
    auto playlist = std::make_shared<ZALRekordboxPlaylist>();
    playlist->name_ = std::move(name);
    return playlist;
}

std::shared_ptr<ZALRekordboxPlaylist> ZALRekordboxPlaylist::initWithXMLElement(
    const zal::XMLElement& element) {
    if (!zal::isNode(element, zal::NodeType::playlist)) return nullptr;
    auto playlist = rekordboxPlaylistWithName(element.attributeText("Name"));
    playlist->element_ = element.handle();
    const bool isByLocation = zal::numberOf(element, "KeyType").value_or(0) != 0;
    std::set<std::string> locations;
    std::set<std::uint64_t> ids;
    for (auto track = element.firstChild(trackName); track; track = track.next(trackName)) {
        const char* key = track.attribute("Key");
        if (key == nullptr) continue;
        if (isByLocation) {
            locations.emplace(key);
        } else {
            ids.insert(zal::unsignedValue(key));
        }
    }
    if (isByLocation) {
        playlist->tracksAsLocation_ = std::move(locations);
    } else {
        playlist->tracksAsId_ = std::move(ids);
    }
    return playlist;
}

void ZALRekordboxPlaylist::setName(std::string name) {
    name_ = std::move(name);
    xmlNeedsUpdate_ = true;
}

std::size_t ZALRekordboxPlaylist::trackCount() const {
    if (tracksAsLocation_) return tracksAsLocation_->size();
    return tracksAsId_ ? tracksAsId_->size() : 0;
}

bool ZALRekordboxPlaylist::addTrackAsId(std::int32_t trackId) {
    if (tracksAsLocation_) return false;
    if (!tracksAsId_) tracksAsId_.emplace();
    if (!tracksAsId_->insert(static_cast<std::uint64_t>(std::int64_t{trackId})).second) return false;
    xmlNeedsUpdate_ = true;
    return true;
}

zal::XMLElement ZALRekordboxPlaylist::xmlElement(zal::XMLElement parent) {
    if (element_ == nullptr) {
        element_ = parent.appendChild(zal::playlistNodeName).handle();
        xmlNeedsUpdate_ = true;
    }
    updateXMLElement();
    return zal::XMLElement::ofHandle(element_);
}

void ZALRekordboxPlaylist::updateXMLElement() {
    if (element_ == nullptr || !xmlNeedsUpdate_) return;
    auto element = zal::XMLElement::ofHandle(element_);
    const zal::XMLAttribute attributes[] = {{"Type", "1"},
                                            {"Name", name_},
                                            {"Entries", std::to_string(trackCount())},
                                            {"KeyType", tracksAsLocation_ ? "1" : "0"}};
    element.setAttributes(attributes);
    while (const auto track = element.firstChild(trackName)) {
        element.removeChild(track);
    }
    const auto append = [&element](const std::string& key) {
        element.appendChild(trackName).setAttribute("Key", key);
    };
    if (tracksAsLocation_) {
        for (const std::string& location : *tracksAsLocation_) {
            append(location);
        }
    } else if (tracksAsId_) {
        for (const std::uint64_t id : *tracksAsId_) {
            append(std::to_string(id));
        }
    }
    xmlNeedsUpdate_ = false;
}

std::shared_ptr<ZALRekordboxPlaylist> ZALRekordboxPlaylist::copy() const {
    auto made = std::make_shared<ZALRekordboxPlaylist>(*this);
    made->element_ = nullptr;
    return made;
}
