#pragma once

#include <zaltag/base/ZALExport.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace zal {
class XMLElement;
}

/// A playlist of the Rekordbox collection: a set of tracks, by their ids or by their locations. A playlist
/// that a database hands out is a copy.
class ZALTAG_EXPORT ZALRekordboxPlaylist {
  public:
    /// A new, empty playlist without an element.
    static std::shared_ptr<ZALRekordboxPlaylist> rekordboxPlaylistWithName(std::string name);
    static std::shared_ptr<ZALRekordboxPlaylist> initWithName(std::string name) {
        return rekordboxPlaylistWithName(std::move(name));
    }
    /// The playlist of a node; null for an element that is none.
    ZALTAG_INSIDE static std::shared_ptr<ZALRekordboxPlaylist> initWithXMLElement(
        const zal::XMLElement& element);

    const std::string& name() const { return name_; }
    /// Marks the playlist for writing.
    void setName(std::string name);
    /// The ids of the tracks, a negative one as 2^64 less; null while there are none, and for a playlist
    /// keyed by location.
    const std::optional<std::set<std::uint64_t>>& tracksAsId() const { return tracksAsId_; }
    /// The locations of the tracks; null for a playlist keyed by id.
    const std::optional<std::set<std::string>>& tracksAsLocation() const { return tracksAsLocation_; }
    std::size_t trackCount() const;

    /// Adds a track and gives true; false when it is there already or the playlist is keyed by location.
    bool addTrackAsId(std::int32_t trackId);

    // For elements of the document:

    /// The element, written anew if the playlist changed. Without one, a node is appended to `parent` first.
    ZALTAG_INSIDE zal::XMLElement xmlElement(zal::XMLElement parent);
    void updateXMLElement();
    /// A copy that stands for itself.
    std::shared_ptr<ZALRekordboxPlaylist> copy() const;

  private:
    std::string name_;
    std::optional<std::set<std::uint64_t>> tracksAsId_;
    std::optional<std::set<std::string>> tracksAsLocation_;
    void* element_ = nullptr;
    bool xmlNeedsUpdate_ = false;
};
