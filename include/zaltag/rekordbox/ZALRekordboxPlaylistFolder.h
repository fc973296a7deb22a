#pragma once

#include <zaltag/base/ZALExport.h>
#include <zaltag/rekordbox/ZALRekordboxPlaylist.h>

#include <memory>
#include <string>
#include <vector>

/// The name of the playlist that holds every track whose cue points this library wrote.
ZALTAG_EXPORT extern const std::string ZALRekordboxCuepointsPlaylistName;

/// A folder of playlists of the Rekordbox collection. A folder that a database hands out is a copy.
class ZALTAG_EXPORT ZALRekordboxPlaylistFolder {
  public:
    /// A new, empty folder without an element.
    static std::shared_ptr<ZALRekordboxPlaylistFolder> rekordboxPlaylistFolderWithName(std::string name);
    static std::shared_ptr<ZALRekordboxPlaylistFolder> initWithName(std::string name) {
        return rekordboxPlaylistFolderWithName(std::move(name));
    }
    /// The folder of a node, with all that is in it; null for an element that is none.
    ZALTAG_INSIDE static std::shared_ptr<ZALRekordboxPlaylistFolder> initWithXMLElement(
        const zal::XMLElement& element);

    const std::string& name() const { return name_; }
    /// Marks the folder for writing: its node then holds the playlists first, the folders after them.
    void setName(std::string name);
    /// In the order of the document.
    const std::vector<std::shared_ptr<ZALRekordboxPlaylist>>& playlists() const { return playlists_; }
    const std::vector<std::shared_ptr<ZALRekordboxPlaylistFolder>>& folders() const { return folders_; }

    /// The first playlist of that name in this folder, not in those below it; null without one, unless it is
    /// to be made.
    std::shared_ptr<ZALRekordboxPlaylist> getPlaylist(const std::string& name, bool createIfNotExist);

    // For elements of the document:

    /// The element, written anew where something changed. Without one, a node is appended to `parent` first.
    ZALTAG_INSIDE zal::XMLElement xmlElement(zal::XMLElement parent);
    void updateXMLElement();
    /// A copy that stands for itself, with all that is in it.
    std::shared_ptr<ZALRekordboxPlaylistFolder> copy() const;

  private:
    ZALTAG_INSIDE void writeChildren();

    std::string name_;
    std::vector<std::shared_ptr<ZALRekordboxPlaylist>> playlists_;
    std::vector<std::shared_ptr<ZALRekordboxPlaylistFolder>> folders_;
    void* element_ = nullptr;
    bool xmlNeedsUpdate_ = false;
};
