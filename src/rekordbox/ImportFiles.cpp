#include "rekordbox/ImportFiles.h"

#include "base/Paths.h"
#include "collection/XMLMarkup.h"
#include "rekordbox/RekordboxProgram.h"

#include <zaltag/platform/ZALHost.h>
#include <zaltag/rekordbox/ZALRekordboxPlaylistFolder.h>
#include <zaltag/rekordbox/ZALRekordboxTrack.h>

#include <fmt/format.h>

#include <algorithm>

namespace zal {

namespace {

constexpr std::size_t tracksPerFile = 5000;
constexpr std::size_t chunkSize = 65536;
constexpr const char* markName = "POSITION_MARK";

// Text that is handed on in chunks.
class Chunks {
  public:
    explicit Chunks(const ChunkSink& sink) : sink_(sink) {}

    void add(std::string_view text) {
        text_ += text;
        if (text_.size() >= chunkSize) flush();
    }
    bool flush() {
        const ZALDataView view(reinterpret_cast<const std::uint8_t*>(text_.data()), text_.size());
        isTaken_ = isTaken_ && sink_(view);
        text_.clear();
        return isTaken_;
    }

  private:
    const ChunkSink& sink_;
    std::string text_;
    bool isTaken_ = true;
};

void copyTrack(const XMLElement& track, XMLElement copy) {
    copy.setAttribute("TrackID", std::to_string(ZALRekordboxTrack::idOfXMLElement(track)));
    copy.setAttribute("Location", track.attributeText("Location"));
    copy.setAttribute("TotalTime", track.attributeText("TotalTime"));
    for (auto mark = track.firstChild(markName); mark; mark = mark.next(markName)) {
        XMLElement markCopy = copy.appendChild(markName);
        for (const auto& [name, value] : mark.attributes()) {
            markCopy.setAttribute(name.c_str(), value);
        }
    }
}

}  // namespace

std::string getPathForSplitXml(std::uint32_t index, const std::string& rekordboxDatabaseFile) {
    return joinPaths(folderOf(rekordboxDatabaseFile), fmt::format("rekordbox_zalcues_{:03}.xml", index + 1));
}

std::string getPlaylistNameForSplitXml(std::uint32_t) {
    return ZALRekordboxCuepointsPlaylistName;
}

std::vector<std::size_t> importGroupEnds(std::size_t candidates) {
    const std::size_t files =
        std::min<std::size_t>((candidates + tracksPerFile - 1) / tracksPerFile, maximalImportFiles);
    std::vector<std::size_t> ends;
    for (std::size_t file = 1; file <= files; ++file) {
        ends.push_back(file * candidates / files);
    }
    return ends;
}

bool writeImportFile(ElementReader& reader, std::span<const TrackChange> tracks,
                     const std::string& playlistName, const ChunkSink& sink) {
    const bool isEvery = ZALHost::shared().collectionSaveMode() == ZALCollectionSaveMode::everyTrackWithCues;
    const std::vector<IndexedTrack>& all = reader.index().tracks();
    std::vector<XMLAttributeEdit> ofRoot{{"Version", "1.0.0"}};
    for (XMLAttributeEdit& attribute : makersStamp()) {
        ofRoot.push_back(std::move(attribute));
    }
    Chunks chunks(sink);
    chunks.add("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n");
    chunks.add(withAttributes("<DJ_PLAYLISTS>", ofRoot));
    chunks.add(fmt::format("\n  <COLLECTION Entries=\"{}\">\n", tracks.size()));
    XMLDocument scratch;
    for (const TrackChange& track : tracks) {
        const XMLElement element = reader.element(all[track.number].span());
        if (!element) return false;
        if (isEvery && (track.request != nullptr || all[track.number].isMarked)) {
            bringUpToDate(*ZALRekordboxTrack::initWithXMLElement(element), track);
        }
        const XMLElement copy = scratch.makeRoot("TRACK");
        copyTrack(element, copy);
        chunks.add("    " + markupOf(copy, rekordboxProgram().style, 2) + "\n");
    }
    chunks.add("  </COLLECTION>\n  <PLAYLISTS>\n    <NODE Type=\"0\" Name=\"ROOT\" Count=\"1\">\n");
    chunks.add(fmt::format("      <NODE Type=\"1\" Name=\"{}\" KeyType=\"0\" Entries=\"{}\">\n",
                           attributeValue(playlistName), tracks.size()));
    for (const TrackChange& track : tracks) {
        chunks.add(fmt::format("        <TRACK Key=\"{}\" />\n", all[track.number].id));
    }
    chunks.add("      </NODE>\n    </NODE>\n  </PLAYLISTS>\n</DJ_PLAYLISTS>\n");
    return chunks.flush();
}

bool saveSingleSplitXmlFile(ElementReader& reader, std::span<const TrackChange> tracks,
                            const std::string& filename, const std::string& playlistName) {
    return replaceFileContents(
        filename, [&](const ChunkSink& sink) { return writeImportFile(reader, tracks, playlistName, sink); });
}

}  // namespace zal
