#include "support/AudioFixtures.h"
#include "support/CollectionFixtures.h"
#include "support/FaultInjection.h"
#include "support/Formats.h"
#include "support/Hex.h"
#include "support/WavFixtures.h"

#include "rekordbox/ImportFiles.h"

#include <zaltag/containers/ZALTagWAV.h>
#include <zaltag/rekordbox/ZALRekordboxDatabase.h>
#include <zaltag/traktor/ZALTraktorDatabase.h>

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
                tag->setZalVelvetCascade(ZALTagVelvetCascade::tagWithBackupFileName(nullptr, *processed));
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
            const auto processed = ZALTagVelvetCascade::tagWithBackupFileName(nullptr, true);
            return !ZALTagWAV::writePNTag(processed, path);
        };
    };
    return {"record.wav", file, edit("New title", true), edit("New title", std::nullopt), record};
}

// A collection of 2000 such tracks, which takes more than one write. They are saved anew.
template <auto load, auto choose>
SaveCase collectionCase(const char* name, const std::string& head, const std::string& track,
                        const std::string& end) {
    const auto file = [=] {
        std::string text = head;
        for (int i = 0; i < 2000; ++i) {
            text += track;
        }
        return bytesOf(text + end);
    };
    const auto open = [](const std::string& path) -> std::function<bool()> {
        const auto host = std::make_shared<QuietHost>();
        choose(path);
        const auto database = load(path);
        if (database->trackCount() == 0) return {};
        return [host, database] { return database->save(); };
    };
    return {name, file, open};
}

SaveCase rekordboxCase() {
    return collectionCase<&ZALRekordboxDatabase::initWithRekordboxDatabaseFileAtURL,
                          &ZALRekordboxDatabase::setUserRekordboxDatabaseFileURL>(
        "rekordbox.xml", "<DJ_PLAYLISTS><COLLECTION>", "<TRACK><POSITION_MARK Start='1.50'/></TRACK>",
        "</COLLECTION></DJ_PLAYLISTS>");
}

// One entry names a file, whose date is asked for; it is always there and has none to write.
SaveCase traktorCase() {
    return collectionCase<&ZALTraktorDatabase::initWithTraktorDatabaseFileAtURL,
                          &ZALTraktorDatabase::setUserTraktorDatabaseFileURL>(
        "collection.nml",
        "<NML><COLLECTION><ENTRY><LOCATION DIR='/:dev/:' FILE='null'/><CUE_V2 HOTCUE='-1'/></ENTRY>",
        "<ENTRY A='" + std::string(200, 'x') + "'/>", "</COLLECTION></NML>");
}

// An import file of that program, over an older one.
SaveCase importCase() {
    const auto open = [](const std::string& path) -> std::function<bool()> {
        const auto host = std::make_shared<QuietHost>();
        const auto collection = std::make_shared<zal::XMLDocument>();
        std::vector<zal::XMLElement> tracks(500);
        zal::XMLElement all = collection->appendRoot("COLLECTION");
        for (zal::XMLElement& track : tracks) {
            track = all.appendChild("TRACK");
            track.appendChild("POSITION_MARK").setAttribute("Start", "1.5");
        }
        const std::shared_ptr<zal::XMLDocument> document = zal::importDocument(tracks, "list");
        return [host, document, path] { return zal::saveSingleSplitXmlFile(*document, path); };
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
        return [folder, source, path, copy = copier.copy] { return copy(source, path); };
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
            rekordboxCase(),
            importCase(),
            traktorCase()};
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
