#include "rekordbox/PlaylistEdit.h"

#include "base/Numbers.h"
#include "collection/TrackEdit.h"
#include "rekordbox/PlaylistNode.h"

#include <zaltag/rekordbox/ZALRekordboxPlaylistFolder.h>

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace zal {

namespace {

void sortOnce(std::vector<std::uint64_t>& ids) {
    std::sort(ids.begin(), ids.end());
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
}

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
    return withChildren(tag + text.substr(tagEnd), blank, indent, {&playlist, 1});
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
    const auto text = reader.text(span);
    const std::string whole = text ? withChildren(*text, blank, indent, {&root, 1}) : root;
    const std::size_t at = whole.rfind(root);
    edit.before = whole.substr(0, at);
    edit.after = whole.substr(at + root.size());
    return edit;
}

// A playlist of all tracks may be long: it is text at once.
std::string newPlaylist(const CollectionIndex& index, const std::string& name,
                        const std::vector<std::uint32_t>& numbers) {
    std::vector<std::uint64_t> ids;
    ids.reserve(numbers.size());
    for (const std::uint32_t number : numbers) {
        ids.push_back(static_cast<std::uint64_t>(std::int64_t{index.tracks()[number].id}));
    }
    sortOnce(ids);
    std::string text = fmt::format("<NODE Type=\"1\" Name=\"{}\" Entries=\"{}\" KeyType=\"0\">\n",
                                   attributeValue(name), ids.size());
    text.reserve(text.size() + 33 * ids.size());
    for (const std::uint64_t id : ids) {
        fmt::format_to(std::back_inserter(text), "        <TRACK Key=\"{}\" />\n", id);
    }
    return text + "      </NODE>";
}

// The element of a tag, without what the tag begins.
XMLElement elementOf(std::string_view tag, XMLDocument& document) {
    const bool isEmpty = tag.ends_with("/>");
    return document.load(isEmpty ? std::string(tag) : std::string(tag.substr(0, tag.size() - 1)) + "/>");
}

std::string_view firstTag(std::string_view element) {
    XMLTags tags(element);
    return tags.next() ? element.substr(0, tags.tag().end) : std::string_view();
}

std::vector<std::uint64_t> idsIn(std::string_view playlist, XMLDocument& document) {
    std::vector<std::uint64_t> ids;
    XMLTags tags(playlist);
    for (int depth = 0; tags.next();) {
        if (tags.kind() == XMLTags::Kind::end) --depth;
        if (depth == 1 && tags.kind() != XMLTags::Kind::end && tags.name() == "TRACK") {
            const std::string_view tag = playlist.substr(tags.tag().begin, tags.tag().end - tags.tag().begin);
            const char* const key = elementOf(tag, document).attribute("Key");
            if (key != nullptr) ids.push_back(unsignedValue(key));
        }
        if (tags.kind() == XMLTags::Kind::start) ++depth;
    }
    sortOnce(ids);
    return ids;
}

}  // namespace

std::optional<FrameEdit> playlistEdit(ElementReader& reader, const std::string& playlistName,
                                      const std::vector<std::uint32_t>& numbers) {
    const CollectionFrame& frame = reader.index().frame();
    if (!frame.hasRoot || numbers.empty()) return std::nullopt;
    if (!frame.firstNode) {
        return newRoot(reader, "<NODE Type=\"0\" Name=\"ROOT\" Count=\"1\">\n      " +
                                   newPlaylist(reader.index(), playlistName, numbers) + "\n    </NODE>");
    }

    const XMLElement root = reader.element(*frame.firstNode);
    const auto folder = ZALRekordboxPlaylistFolder::initWithXMLElement(root);
    if (!folder) return std::nullopt;
    const std::string text(reader.lastText());
    const auto playlist = folder->getPlaylist(playlistName, false);
    if (!playlist) {
        const std::string blank = reader.blankInFrontOf(frame.firstNode->begin);
        return editOf(*frame.firstNode, withNewPlaylist(text, blank, *folder,
                                                        newPlaylist(reader.index(), playlistName, numbers)));
    }
    if (!addTracks(*playlist, reader.index(), numbers)) return std::nullopt;
    return editOf(*frame.firstNode, withPlaylist(text, root, playlist->xmlElement(root)));
}

std::vector<std::uint64_t> idsInPlaylist(ElementReader& reader, const std::string& playlistName) {
    const std::optional<Span>& node = reader.index().frame().firstNode;
    const auto text = node ? reader.text(*node) : std::nullopt;
    XMLDocument document;
    if (!text || !isNode(elementOf(firstTag(*text), document), NodeType::folder)) return {};
    for (const auto& child : partsOf(*text).children) {
        const std::string_view playlist =
            text->substr(child.range.begin, child.range.end - child.range.begin);
        if (child.name != playlistNodeName) continue;
        const XMLElement tag = elementOf(firstTag(playlist), document);
        if (!isNode(tag, NodeType::playlist) || tag.attributeText("Name") != playlistName) continue;
        if (numberOf(tag, "KeyType").value_or(0) != 0) return {};
        return idsIn(playlist, document);
    }
    return {};
}

}  // namespace zal
