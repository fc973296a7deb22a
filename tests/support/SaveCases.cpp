#include "support/AudioFixtures.h"
#include "support/CollectionFixtures.h"
#include "support/FaultInjection.h"
#include "support/Formats.h"
#include "support/Hex.h"
#include "support/WavFixtures.h"

#include "rekordbox/ImportFiles.h"
#include "rekordbox/RekordboxProgram.h"

#include <zaltag/containers/ZALTagWAV.h>
#include <zaltag/rekordbox/ZALRekordboxDatabase.h>
#include <zaltag/rekordbox/ZALRekordboxQueue.h>
#include <zaltag/traktor/ZALTraktorDatabase.h>
#include <zaltag/traktor/ZALTraktorQueue.h>

#include <memory>
#include <utility>

namespace {

// An edit through the library, for every format it opens.
std::function<bool()> retitled(const std::string& path, const std::string& title) {
    const auto tag = ZALTag::tagAtPath(path);
    if (!tag) return {};
    tag->setTitle(title);
    return [tag] { return tag->save(); };
}

SaveCase libraryCase(const Format& format, const char* what, const std::string& before,
                     const std::string& after) {
    const std::string name = std::string(what) + "." + format.extension;
    const auto file = [=, fresh = format.file] {
        const TemporaryFolder folder;
        const std::string path = folder.write(name, fresh());
        if (const auto save = retitled(path, before); !save || !save()) throw std::runtime_error(name);
        return contentsOf(path);
    };
    return {name, file, [after](const std::string& path) { return retitled(path, after); }};
}

// A WAV whose tags and processing record are both old, and get new.
SaveCase recordCase() {
    const auto edit = [](const char* title, std::optional<bool> processed) {
        return [=](const std::string& path) -> std::function<bool()> {
            const auto tag = ZALTagWAV::tagAtPath(path);
            if (!tag) return {};
            tag->setTitle(title);
            tag->setZalVelvetCascade(std::nullopt);
            if (processed) {
                tag->setZalVelvetCascade(ZALTagVelvetCascade(nullptr, *processed));
            }
            return [tag] { return tag->save(); };
        };
    };
    const auto file = [=] {
        const TemporaryFolder folder;
        const std::string path = folder.write("record.wav", wavFile());
        if (!edit("Old title", false)(path)()) throw std::runtime_error("record.wav");
        return contentsOf(path);
    };
    const auto record = [](const std::string& path) {
        return [path] {
            const auto processed = ZALTagVelvetCascade(nullptr, true);
            return !ZALTagWAV::writePNTag(processed, path);
        };
    };
    return {"record.wav", file, edit("New title", true), edit("New title", std::nullopt), record};
}

std::string times2000(const std::string& track) {
    std::string all;
    for (int i = 0; i < 2000; ++i) {
        all += track;
    }
    return all;
}

// A collection that takes more than one write. In one mode all tracks are saved anew, in the other a queue
// changes the one of an audio file.
template <typename Database, typename Queue>
SaveCase collectionCase(const std::string& name, const std::string& text, const std::string& audio,
                        ZALCollectionSaveMode mode) {
    const auto open = [mode, audio](const std::string& path) -> std::function<bool()> {
        const auto host = std::make_shared<QuietHost>();
        host->host->setCollectionSaveMode(mode);
        const auto database = Database::databaseOfFileAtURL(path);
        if (database->trackCount() == 0) return {};
        if (mode == ZALCollectionSaveMode::everyTrackWithCues)
            return [host, database] { return database->save(); };
        const std::shared_ptr<ZALCollectionQueue> queue = Queue::queueWithDatabase(database);
        queue->setCuePoints({ZALTagCuePoint(1, "n")}, audio, ZALCueKind::all);
        return [host, queue] { return saved(*queue).success; };
    };
    return {name, [text] { return bytesOf(text); }, open};
}

void addCollectionCases(std::vector<SaveCase>& rows) {
    // The date of the audio file gives the entry the one that it also has when that cannot be looked at.
    static const TemporaryFolder folder;
    const std::string audio = folder.write("a.mp3", {});
    const auto hourAgo = std::chrono::sys_seconds(std::chrono::seconds(1'700'000'000 - 3599));
    std::filesystem::last_write_time(audio, std::chrono::file_clock::from_sys(hourAgo));
    const std::string xml = "<DJ_PLAYLISTS><COLLECTION><TRACK Location='file://" + audio + "'/>" +
                            times2000("<TRACK><POSITION_MARK Start='1.50'/></TRACK>") +
                            "</COLLECTION></DJ_PLAYLISTS>";
    const std::string nml = "<NML><COLLECTION><ENTRY MODIFIED_DATE='2000/1/1'><LOCATION DIR='" +
                            traktorFolder(folder.path()) + "' FILE='a.mp3'/><CUE_V2 HOTCUE='-1'/></ENTRY>" +
                            times2000("<ENTRY A='" + std::string(200, 'x') + "'/>") + "</COLLECTION></NML>";
    for (const auto& [mode, kind] : {std::pair(ZALCollectionSaveMode::everyTrackWithCues, "every."),
                                     std::pair(ZALCollectionSaveMode::changedTracks, "changed.")}) {
        const std::string name = kind;
        rows.push_back(
            collectionCase<ZALRekordboxDatabase, ZALRekordboxQueue>(name + "xml", xml, audio, mode));
        rows.push_back(collectionCase<ZALTraktorDatabase, ZALTraktorQueue>(name + "nml", nml, audio, mode));
    }
}

// An import file of Rekordbox's, over an older one.
SaveCase importCase() {
    const auto open = [](const std::string& path) -> std::function<bool()> {
        const auto host = std::make_shared<QuietHost>();
        const TemporaryFolder folder;
        std::string reason;
        const auto index = zal::CollectionIndex::read(
            zal::rekordboxProgram(),
            folder.write("all.xml", bytesOf("<DJ_PLAYLISTS><COLLECTION>" +
                                            times2000("<TRACK><POSITION_MARK Start='1.5'/></TRACK>") +
                                            "</COLLECTION></DJ_PLAYLISTS>")),
            reason);
        if (!index) return {};
        const auto reader = std::make_shared<zal::ElementReader>(index);
        const std::vector<zal::TrackChange> tracks(500);
        return [host, reader, tracks, path] {
            return zal::saveSingleSplitXmlFile(*reader, tracks, path, "list");
        };
    };
    return {"import.xml", [] { return ZALData(3000, 'o'); }, open};
}

// A copy of the tags of one format into a file of another.
SaveCase copyCase(const Copier& copier) {
    const Format &from = formatOf(copier.from), &to = formatOf(copier.to);
    const auto folder = std::make_shared<TemporaryFolder>();
    const std::string source = folder->path() / (std::string("source.") + from.extension);
    // The source is made with the first copy, which is one without faults.
    const auto openAndEdit = [=, file = from.file](const std::string& path) -> std::function<bool()> {
        if (!std::filesystem::exists(source)) {
            const auto tag = ZALTag::tagAtPath(folder->write(source, file()));
            // A genre is set, where a title would be added once more by the next copy.
            tag->setGenre(std::string(6000, 'g'));
            if (!tag->save()) throw std::runtime_error(source);
        }
        return [folder, source, path, copy = copier.copy] { return copy(source, path, nullptr); };
    };
    return {std::string("copied from ") + from.name + "." + to.extension, to.file, openAndEdit};
}

}  // namespace

const std::vector<SaveCase>& saveCases() {
    static const std::vector<SaveCase> cases = [] {
        const auto twoTags = [] {
            return joined({id3Tag({id3Text("TIT2", "Old title")}, 1000), mpegFrames(250),
                           id3v1Tag("Old title", "", "")});
        };
        std::vector<SaveCase> rows{
            {"two tags.mp3", twoTags, [](const std::string& path) { return retitled(path, "New title"); }},
            recordCase(),
            importCase()};
        addCollectionCases(rows);
        for (const Format& format : formats()) {
            const std::string long_(20000, 't');
            rows.push_back(libraryCase(format, "the library grows it", "Old title", long_));
            rows.push_back(libraryCase(format, "the library shrinks it", long_, "Old title"));
            rows.push_back(libraryCase(format, "the library overwrites it", "Old title", "New title"));
        }
        for (const Copier& copier : copiers()) {
            rows.push_back(copyCase(copier));
        }
        return rows;
    }();
    return cases;
}
