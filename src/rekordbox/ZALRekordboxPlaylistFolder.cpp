#include <zaltag/rekordbox/ZALRekordboxPlaylistFolder.h>

#include "rekordbox/PlaylistNode.h"

#include <utility>

const std::string ZALRekordboxCuepointsPlaylistName = "ZAL Cue Points";

std::shared_ptr<ZALRekordboxPlaylistFolder> ZALRekordboxPlaylistFolder::rekordboxPlaylistFolderWithName(
    std::string name) {
    auto folder = std::make_shared<ZALRekordboxPlaylistFolder>();
    folder->name_ = std::move(name);
    return folder;
}

std::shared_ptr<ZALRekordboxPlaylistFolder> ZALRekordboxPlaylistFolder::initWithXMLElement(
    const zal::XMLElement& element) {
    if (!zal::isNode(element, zal::NodeType::folder)) return nullptr;
    auto folder = rekordboxPlaylistFolderWithName(element.attributeText("Name"));
    folder->element_ = element.handle();
    const char* nodeName = zal::playlistNodeName;
    for (auto node = element.firstChild(nodeName); node; node = node.next(nodeName)) {
        const auto type = zal::numberOf(node, "Type");
        if (!type) continue;
        if (*type == 0) {
            if (auto child = initWithXMLElement(node)) folder->folders_.push_back(std::move(child));
        } else if (auto playlist = ZALRekordboxPlaylist::initWithXMLElement(node)) {
            folder->playlists_.push_back(std::move(playlist));
        }
    }
    return folder;
}

void ZALRekordboxPlaylistFolder::setName(std::string name) {
    name_ = std::move(name);
    xmlNeedsUpdate_ = true;
}

std::shared_ptr<ZALRekordboxPlaylist> ZALRekordboxPlaylistFolder::getPlaylist(const std::string& name,
                                                                              bool createIfNotExist) {
    for (const auto& playlist : playlists_) {
        if (playlist->name() == name) return playlist;
    }
    if (!createIfNotExist) return nullptr;
    auto playlist = ZALRekordboxPlaylist::rekordboxPlaylistWithName(name);
    if (element_ == nullptr) {
        playlists_.push_back(playlist);
        return playlist;
    }
    updateXMLElement();
    auto element = zal::XMLElement::ofHandle(element_);
    playlist->xmlElement(element);
    playlists_.push_back(playlist);
    element.setAttribute("Count", std::to_string(playlists_.size() + folders_.size()));
    return playlist;
}

zal::XMLElement ZALRekordboxPlaylistFolder::xmlElement(zal::XMLElement parent) {
    if (element_ == nullptr) {
        element_ = parent.appendChild(zal::playlistNodeName).handle();
        xmlNeedsUpdate_ = true;
    }
    updateXMLElement();
    return zal::XMLElement::ofHandle(element_);
}

void ZALRekordboxPlaylistFolder::updateXMLElement() {
    if (element_ == nullptr) return;
    if (xmlNeedsUpdate_) {
        writeChildren();
        xmlNeedsUpdate_ = false;
        return;
    }
    for (const auto& playlist : playlists_) {
        playlist->updateXMLElement();
    }
    for (const auto& folder : folders_) {
        folder->updateXMLElement();
    }
}

// Nodes that made neither a playlist nor a folder go, the playlists come before the folders.
void ZALRekordboxPlaylistFolder::writeChildren() {
    auto element = zal::XMLElement::ofHandle(element_);
    const zal::XMLAttribute attributes[] = {
        {"Type", "0"}, {"Name", name_}, {"Count", std::to_string(playlists_.size() + folders_.size())}};
    element.setAttributes(attributes);
    std::set<void*> kept;
    const auto moveToEnd = [&](zal::XMLElement child) {
        kept.insert(child.handle());
        element.moveToEnd(child);
    };
    for (const auto& playlist : playlists_) {
        moveToEnd(playlist->xmlElement(element));
    }
    for (const auto& folder : folders_) {
        moveToEnd(folder->xmlElement(element));
    }
    for (auto node = element.firstChild(zal::playlistNodeName); node;) {
        const auto next = node.next(zal::playlistNodeName);
        if (!kept.contains(node.handle())) element.removeChild(node);
        node = next;
    }
}

std::shared_ptr<ZALRekordboxPlaylistFolder> ZALRekordboxPlaylistFolder::copy() const {
    auto made = rekordboxPlaylistFolderWithName(name_);
    for (const auto& playlist : playlists_) {
        made->playlists_.push_back(playlist->copy());
    }
    for (const auto& folder : folders_) {
        made->folders_.push_back(folder->copy());
    }
    return made;
}
