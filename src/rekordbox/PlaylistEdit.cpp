#include "rekordbox/PlaylistEdit.h"

#include "collection/TrackEdit.h"
#include "rekordbox/PlaylistNode.h"

#include <zaltag/rekordbox/ZALRekordboxPlaylistFolder.h>

#include <algorithm>

namespace zal {

namespace {

constexpr unsigned rootDepth = 2;
constexpr const char* indent = "  ";

bool addTracks(ZALRekordboxPlaylist& playlist, const CollectionIndex& index,
               const std::vector<std::uint32_t>& numbers) {
    bool isAdded = false;
    for (const std::uint32_t number : numbers) {
        isAdded = playlist.addTrackAsId(index.tracks()[number].id) || isAdded;
    }
    return isAdded;
}

FrameEdit editOf(const Span& span, std::string part) {
    FrameEdit edit;
    edit.begin = span.begin;
    edit.end = span.end;
    edit.part = std::move(part);
    edit.names = FrameEdit::Part::firstNode;
    return edit;
}

// The text of the root with another playlist in the place of the one that an element is.
std::string withPlaylist(const std::string& text, const XMLElement& root, const XMLElement& playlist) {
    XMLElement child = root.firstChild(playlistNodeName);
    for (const auto& part : partsOf(text).children) {
        if (part.name != playlistNodeName) continue;
        if (child == playlist) {
            return text.substr(0, part.range.begin) + markupOf(playlist, {}, rootDepth + 1) +
                   text.substr(part.range.end);
        }
        child = child.next(playlistNodeName);
    }
    return text;
}

// The text of the root with a playlist more.
std::string withNewPlaylist(const std::string& text, std::string_view blank,
                            const ZALRekordboxPlaylistFolder& folder, const std::string& playlist) {
    const std::size_t tagEnd = partsOf(text).startTag.end;
    const std::size_t count = folder.playlists().size() + folder.folders().size() + 1;
    const std::string tag =
        withAttributes(std::string_view(text).substr(0, tagEnd), {{"Count", std::to_string(count)}});
    return withChildren(tag + text.substr(tagEnd), blank, indent, {playlist});
}

// A root with the one playlist, in a file that has none yet.
FrameEdit newRoot(ElementReader& reader, const std::string& root) {
    const CollectionFrame& frame = reader.index().frame();
    if (frame.playlists.empty()) {
        FrameEdit edit = editOf({frame.rootEnd, frame.rootEnd, 0}, root);
        const bool isOnNewLine = reader.blankInFrontOf(frame.rootEnd).ends_with('\n');
        edit.before = std::string(isOnNewLine ? "" : "\n") + "  <PLAYLISTS>\n    ";
        edit.after = "\n  </PLAYLISTS>\n";
        return edit;
    }
    const Span& span = frame.playlists.front();
    FrameEdit edit = editOf(span, root);
    const std::string blank = reader.blankInFrontOf(span.begin);
    const std::string* text = reader.text(span);
    const std::string whole = text == nullptr ? root : withChildren(*text, blank, indent, {root});
    const std::size_t at = whole.rfind(root);
    edit.before = whole.substr(0, at);
    edit.after = whole.substr(at + root.size());
    return edit;
}

std::string markupOfNew(ZALRekordboxPlaylist& playlist, bool inNewRoot) {
    XMLDocument document;
    XMLElement root = document.makeRoot(playlistNodeName);
    const XMLElement made = playlist.xmlElement(root);
    if (!inNewRoot) return markupOf(made, {}, rootDepth + 1);
    const XMLAttribute attributes[] = {{"Type", "0"}, {"Name", "ROOT"}, {"Count", "1"}};
    root.setAttributes(attributes);
    return markupOf(root, {}, rootDepth);
}

}  // namespace

std::optional<FrameEdit> playlistEdit(ElementReader& reader, const std::string& playlistName,
                                      const std::vector<std::uint32_t>& numbers) {
    const CollectionFrame& frame = reader.index().frame();
    if (!frame.hasRoot || numbers.empty()) return std::nullopt;
    const auto made = ZALRekordboxPlaylist::rekordboxPlaylistWithName(playlistName);
    addTracks(*made, reader.index(), numbers);
    if (!frame.firstNode) return newRoot(reader, markupOfNew(*made, true));

    const XMLElement root = reader.element(*frame.firstNode);
    const auto folder = ZALRekordboxPlaylistFolder::initWithXMLElement(root);
    if (!folder) return std::nullopt;
    const std::string text = reader.lastText();
    const auto playlist = folder->getPlaylist(playlistName, false);
    if (!playlist) {
        const std::string blank = reader.blankInFrontOf(frame.firstNode->begin);
        return editOf(*frame.firstNode, withNewPlaylist(text, blank, *folder, markupOfNew(*made, false)));
    }
    if (!addTracks(*playlist, reader.index(), numbers)) return std::nullopt;
    return editOf(*frame.firstNode, withPlaylist(text, root, playlist->xmlElement(root)));
}

}  // namespace zal
