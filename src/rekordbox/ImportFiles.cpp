#include "rekordbox/ImportFiles.h"

#include "base/Numbers.h"
#include "platform/FileReplacement.h"
#include "rekordbox/RekordboxProgram.h"

#include <zaltag/rekordbox/ZALRekordboxTrack.h>

#include <fmt/format.h>

namespace zal {

namespace {

constexpr std::size_t tracksPerFile = 5000;
constexpr const char* trackName = "TRACK";
constexpr const char* markName = "POSITION_MARK";

std::string idOf(const XMLElement& track) {
    return std::to_string(ZALRekordboxTrack::idOfXMLElement(track));
}

void copyTrack(const XMLElement& track, XMLElement collection) {
    XMLElement copy = collection.appendChild(trackName);
    copy.setAttribute("TrackID", idOf(track));
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
    const auto slash = rekordboxDatabaseFile.rfind('/');
    return joinPaths(rekordboxDatabaseFile.substr(0, slash + 1),
                     fmt::format("rekordbox_zalcues_{:03}.xml", index + 1));
}

std::string getPlaylistNameForSplitXml(std::uint32_t) {
    return ZALRekordboxCuepointsPlaylistName;
}

bool isImportCandidate(const XMLElement& track) {
    return track.firstChild(markName) && track.attribute("TotalTime") != nullptr &&
           track.attribute("Location") != nullptr;
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

std::unique_ptr<XMLDocument> importDocument(std::span<const XMLElement> tracks,
                                            const std::string& playlistName) {
    auto document = std::make_unique<XMLDocument>();
    XMLElement root = document->appendRoot("DJ_PLAYLISTS");
    document->setHeader();
    root.setAttribute("Version", "1.0.0");
    stampRoot(root);
    const std::string count = std::to_string(tracks.size());

    XMLElement collection = root.appendChild("COLLECTION");
    collection.setAttribute("Entries", count);
    for (const XMLElement& track : tracks) {
        copyTrack(track, collection);
    }

    XMLElement folder = root.appendChild("PLAYLISTS").appendChild("NODE");
    const XMLAttribute ofFolder[] = {{"Type", "0"}, {"Name", "ROOT"}, {"Count", "1"}};
    folder.setAttributes(ofFolder);
    XMLElement playlist = folder.appendChild("NODE");
    const XMLAttribute ofPlaylist[] = {
        {"Type", "1"}, {"Name", playlistName}, {"KeyType", "0"}, {"Entries", count}};
    playlist.setAttributes(ofPlaylist);
    for (const XMLElement& track : tracks) {
        playlist.appendChild(trackName).setAttribute("Key", idOf(track));
    }
    return document;
}

bool saveSingleSplitXmlFile(const XMLDocument& document, const std::string& filename) {
    return replaceFileContents(filename, [&document](const ChunkSink& sink) {
        return document.write(sink, rekordboxProgram().style);
    });
}

}  // namespace zal
