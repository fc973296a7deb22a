#include "rekordbox/ImportFiles.h"

#include "base/Numbers.h"
#include "platform/FileReplacement.h"
#include "rekordbox/RekordboxProgram.h"

#include <zaltag/rekordbox/ZALRekordboxCuePoint.h>
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
        // A cue that was read has its attributes in the order of an updated one, written or not.
        if (const auto cue = ZALRekordboxCuePoint::initWithXMLElement(mark)) cue->updateXMLElement(mark);
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

std::vector<XMLElement> importCandidates(const XMLDocument& document, const std::set<std::int64_t>& ids) {
    std::vector<XMLElement> candidates;
    forEachTrackElement(document, [&](const XMLElement& track) {
        const bool isOne = ids.contains(ZALRekordboxTrack::idOfXMLElement(track)) &&
                           track.firstChild(markName) && track.attribute("TotalTime") != nullptr &&
                           track.attribute("Location") != nullptr;
        if (isOne) candidates.push_back(track);
    });
    return candidates;
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

void saveSingleSplitXmlFile(std::span<const XMLElement> tracks, const std::string& filename,
                            const std::string& playlistName) {
    XMLDocument document;
    XMLElement root = document.appendRoot("DJ_PLAYLISTS");
    document.setHeader();
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

    replaceFileContents(filename, [&document](const ChunkSink& sink) {
        return document.write(sink, rekordboxProgram().style);
    });
}

}  // namespace zal
