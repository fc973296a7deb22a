// Audio files and collections: opened, read, changed, saved, opened anew, cleared, saved.

#include "Fuzz.h"
#include "PlainEntries.h"
#include "support/CollectionFixtures.h"
#include "support/Formats.h"
#include "support/ReadEverything.h"

#include "collection/CollectionIndex.h"
#include "rekordbox/RekordboxProgram.h"
#include "traktor/TraktorProgram.h"

#include <zaltag/rekordbox/ZALRekordboxDatabase.h>
#include <zaltag/rekordbox/ZALRekordboxQueue.h>
#include <zaltag/tools/ZALTagDescription.h>
#include <zaltag/traktor/ZALTraktorDatabase.h>
#include <zaltag/traktor/ZALTraktorQueue.h>
#include <zaltag/walks/ZALFirstFrame.h>

namespace {

void set(ZALTag& tag, const std::string& text) {
    for (const char* key : {"title", "comment", "initialKey"}) {
        tag.setValue(text, key);
    }
    tag.setGrouping(text.size() < 10 ? ZALNullableString() : text);
    tag.setTempo(static_cast<std::int64_t>(text.size()));
    tag.setZalKey(ZALTagKey(text, 1));
    tag.setZalVelvetCascade(ZALTagVelvetCascade(nullptr, text.size() > 10));
    tag.setSeratoCuePoints({ZALTagCuePoint(1.5, "cue")});
    tag.restoreOriginalImage();
}

void clear(ZALTag& tag) {
    for (const std::string& key : tag.propertyKeys()) {
        tag.setValue(nullptr, key);
    }
    tag.setZalKey(std::nullopt);
    tag.setSeratoCuePoints({});
    tag.replacePrimaryImage(nullptr, false);
    tag.setShouldStripID3v1Tag(true);
}

std::shared_ptr<ZALTag> opened(const FuzzedFile& file) {
    auto tag = ZALTag::tagAtPath(file.path());
    require(tag != nullptr);
    return tag;
}

// A save that fails leaves every byte, but for the tags of a WAV whose record could not be written.
bool saved(ZALTag& tag, const FuzzedFile& file) {
    const ZALData before = contentsOf(file.path());
    const bool saved = tag.save();
    const bool mayHoldTags = std::string_view(tag.className()) == "ZALTagWAV" && tag.zalVelvetCascade();
    require(file.isAlone() && (saved || file.holds(before) || mayHoldTags));
    return saved;
}

// A save that succeeds leaves a file that opens and holds what was set.
template <const char* extension>
void audio(ZALDataView data) {
    const FuzzedFile file(data, std::string("file.") + extension);
    const auto tag = ZALTag::tagAtPath(file.path());
    if (tag == nullptr) return;
    readEverything(*tag);
    const auto frame = ZALFirstFrame::ofFile(file.path());
    require(!frame || frame->duration > 0);
    const std::vector<ZALDataView> entries = plainEntries(data, extension);
    for (const std::size_t length : {20U, 3000U, 5U}) {
        const std::string text(length, 't');
        set(*tag, text);
        if (!saved(*tag, file)) return;
        require(holdsAll(contentsOf(file.path()), entries));
        const auto again = opened(file);
        require(again->title() == text && !again->seratoCuePoints().empty());
        require(again->zalKey() == ZALTagKey(text, 1));
    }
    const auto again = opened(file);
    clear(*again);
    if (saved(*again, file)) readEverything(*opened(file));
}

constexpr char mp3[] = "mp3", m4a[] = "m4a", wav[] = "wav", aiff[] = "aiff", flac[] = "flac";

void dump(ZALDataView data) {
    for (const char* extension : {mp3, wav, aiff, m4a, flac}) {
        const std::string report = ZALTagDescription(FuzzedFile(data, std::string("a.") + extension).path());
        require(report.ends_with('\n') && ZALValidUTF8(report) == report);
    }
}

// The first byte chooses the function, the next two are the length of the source.
void copy(ZALDataView data) {
    if (data.size() < 3) return;
    const Copier& copier = copiers()[data[0] % copiers().size()];
    const ZALDataView both = data.subspan(3);
    const std::size_t length = std::min<std::size_t>(data[1] * 256U + data[2], both.size());
    const FuzzedFile source(both.first(length), std::string("source.") + copier.from);
    const FuzzedFile destination(both.subspan(length), std::string("destination.") + copier.to);
    const bool copied = copier.copy(source.path(), destination.path(), nullptr);
    require(source.holds(both.first(length)));
    require(copied ? opened(destination) != nullptr : destination.holds(both.subspan(length)));
}

template <typename Database>
void readTracks(const Database& database) {
    for (const auto& track : database.tracks()) {
        track->description();
        track->beatTimes();
        const bool isFile = track->path() && !track->path()->empty();
        require(!isFile || database.trackForSongFileAtURL(track->path()) != nullptr);
    }
}

// A collection file taken apart: its tracks, and the rest without what a save notes around them.
struct Parts {
    std::vector<std::string> tracks;
    std::string around;
};

Parts partsOf(const std::string& path, const zal::CollectionProgram& program) {
    std::string reason;
    const auto index = zal::CollectionIndex::read(program, path, reason);
    require(index != nullptr);
    const ZALData bytes = contentsOf(path);
    Parts parts{{}, std::string(bytes.begin(), bytes.end())};
    std::vector<zal::Span> spans;
    for (const zal::IndexedTrack& track : index->tracks()) {
        spans.push_back(track.span());
        parts.tracks.push_back(parts.around.substr(track.begin, track.length));
    }
    const zal::CollectionFrame& frame = index->frame();
    if (program.stamp != nullptr && frame.hasRoot) spans.push_back(frame.rootTag);
    if (program.stamp != nullptr && frame.firstNode) spans.push_back(*frame.firstNode);
    std::sort(spans.begin(), spans.end(), [](const auto& a, const auto& b) { return a.begin > b.begin; });
    for (const zal::Span& span : spans) {
        parts.around.erase(span.begin, span.size());
    }
    return parts;
}

// A batch asks for every n-th track. In the mode `changedTracks` nothing but those changes, and what stands
// around the tracks at one place, where a playlist had no root.
template <typename Database, typename Queue>
void changeTracks(const std::string& path, const zal::CollectionProgram& program, std::size_t n) {
    const auto database = Database::databaseOfFileAtURL(path);
    const std::shared_ptr<ZALCollectionQueue> queue = Queue::queueWithDatabase(database);
    const Parts before = partsOf(path, program);
    std::string reason;
    zal::ElementReader reader(zal::CollectionIndex::read(program, path, reason));
    std::set<std::uint32_t> asked;
    for (std::uint32_t i = 0, number = 0; i < before.tracks.size(); i += static_cast<std::uint32_t>(n)) {
        const auto track = reader.track(i);
        // Every other track gets its own cues back beside the new ones.
        std::vector<ZALTagCuePoint> cues{ZALTagCuePoint(12.5, "a"), ZALTagCuePoint(1, "&<\xC3\xA9>")};
        const auto own = track->cuePoints(ZALCueKind::all);
        if (i % 2 == 1) cues.insert(cues.end(), own.begin(), own.end());
        const ZALCueKind kind = i % 4 == 3 ? ZALCueKind::hot : ZALCueKind::all;
        require(track->planCuePoints(cues, kind).outcomes.size() == cues.size());
        if (!reader.find(track->indexKey(), number)) continue;
        asked.insert(number);
        queue->setCuePoints(cues, track->path(), kind);
    }
    if (!saved(*queue).success) return;
    const Parts after = partsOf(path, program);
    require(after.tracks.size() == before.tracks.size());
    readTracks(*database);
    readTracks(*Database::databaseOfFileAtURL(path));
    if (ZALHost::shared().collectionSaveMode() == ZALCollectionSaveMode::everyTrackWithCues) return;
    for (std::uint32_t number = 0; number < before.tracks.size(); ++number) {
        require(asked.contains(number) || before.tracks[number] == after.tracks[number]);
    }
    const auto& [one, other] =
        std::mismatch(before.around.begin(), before.around.end(), after.around.begin(), after.around.end());
    require(after.around.size() >= before.around.size());
    require(std::string_view(after.around).ends_with(std::string(one, before.around.end())));
}

// What a save wrote loads; from the second save on nothing changes any more. (The first one may give cues
// another number, by which the second sorts them.)
template <typename Database, typename Queue, const zal::CollectionProgram& (*program)()>
void collection(ZALDataView data) {
    QuietHost host;
    host.clock->advance(600'000'000);  // behind the dates of most collections
    const FuzzedFile changed(data, "collection.xml");
    host.host->setCollectionSaveMode(ZALCollectionSaveMode::changedTracks);
    if (Database::databaseOfFileAtURL(changed.path())->isLoaded()) {
        changeTracks<Database, Queue>(changed.path(), program(), 2);
    }
    const FuzzedFile file(data, "collection.xml");
    host.host->setCollectionSaveMode(ZALCollectionSaveMode::everyTrackWithCues);
    ZALData last;
    for (int round = 0; round < 3; ++round) {
        const auto database = Database::databaseOfFileAtURL(file.path());
        readTracks(*database);
        if (!database->save()) return require(round == 0);
        require(round < 2 || file.holds(last));
        last = contentsOf(file.path());
    }
    changeTracks<Database, Queue>(file.path(), program(), 1);
}

constexpr auto rekordbox = collection<ZALRekordboxDatabase, ZALRekordboxQueue, zal::rekordboxProgram>;
constexpr auto traktor = collection<ZALTraktorDatabase, ZALTraktorQueue, zal::traktorProgram>;

}  // namespace

extern const FuzzTarget fileTargets[] = {{"mp3_file", audio<mp3>},   {"mp4_file", audio<m4a>},
                                         {"wav_file", audio<wav>},   {"aiff_file", audio<aiff>},
                                         {"flac_file", audio<flac>}, {"dump_file", dump},
                                         {"copy_file", copy},        {"rekordbox_xml", rekordbox},
                                         {"traktor_nml", traktor},   {}};
