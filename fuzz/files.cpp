// Audio files and collections: opened, read, changed, saved, opened anew, cleared, saved.

#include "Fuzz.h"
#include "support/CollectionFixtures.h"
#include "support/Formats.h"
#include "support/ReadEverything.h"

#include <zaltag/rekordbox/ZALRekordboxDatabase.h>
#include <zaltag/rekordbox/ZALRekordboxQueue.h>
#include <zaltag/tools/ZALTagDescription.h>
#include <zaltag/traktor/ZALTraktorDatabase.h>
#include <zaltag/traktor/ZALTraktorQueue.h>

namespace {

void set(ZALTag& tag, const std::string& text) {
    for (const char* key : {"title", "comment", "initialKey"}) {
        tag.setValue(text, key);
    }
    tag.setGrouping(text.size() < 10 ? ZALNullableString() : text);
    tag.setTempo(static_cast<std::int64_t>(text.size()));
    tag.setZalKey(ZALTagKey::keyWithKey(text, 1));
    tag.setZalVelvetCascade(ZALTagVelvetCascade::tagWithBackupFileName(nullptr, text.size() > 10));
    tag.setSeratoCuePoints({ZALTagCuePoint::cuePointWithTime(1.5, "cue")});
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

// A save that fails leaves every byte.
bool saved(ZALTag& tag, const FuzzedFile& file) {
    const ZALData before = contentsOf(file.path());
    const bool saved = tag.save();
    require(file.isAlone() && (saved || file.holds(before)));
    return saved;
}

// A save that succeeds leaves a file that opens and holds what was set.
template <const char* extension>
void audio(ZALDataView data) {
    const FuzzedFile file(data, std::string("file.") + extension);
    const auto tag = ZALTag::tagAtPath(file.path());
    if (tag == nullptr) return;
    readEverything(*tag);
    for (const std::size_t length : {20U, 3000U, 5U}) {
        const std::string text(length, 't');
        set(*tag, text);
        if (!saved(*tag, file)) return;
        const auto again = opened(file);
        require(again->title() == text && !again->seratoCuePoints().empty());
        require(again->zalKey() == ZALTagKey::keyWithKey(text, 1));
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
    const bool copied = copier.copy(source.path(), destination.path());
    require(source.holds(both.first(length)));
    require(copied ? opened(destination) != nullptr : destination.holds(both.subspan(length)));
}

void request(ZALRekordboxQueue& queue, const ZALArray<ZALTagCuePoint>& cues, const ZALNullableString& path) {
    queue.setCuePoints(cues, path, true, true);
}
void request(ZALTraktorQueue& queue, const ZALArray<ZALTagCuePoint>& cues, const ZALNullableString& path) {
    queue.setCuePoints(cues, path);
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

// What a save wrote loads; from the second save on nothing changes any more. (The first one may give cues
// another number, by which the second sorts them.) A batch of the queue changes every track.
template <typename Database, typename Queue, auto open, auto choose>
void collection(ZALDataView data) {
    const FuzzedFile file(data, "collection.xml");
    QuietHost host;
    host.clock->advance(600'000'000);  // behind the dates of most collections
    choose(file.path());
    ZALData last;
    for (int round = 0; round < 3; ++round) {
        const auto database = open(file.path());
        readTracks(*database);
        if (!database->save()) return require(round == 0);
        require(round < 2 || file.holds(last));
        last = contentsOf(file.path());
    }
    const auto database = open(file.path());
    const auto queue = Queue::queueWithDatabase(database);
    const ZALArray<ZALTagCuePoint> cues{ZALTagCuePoint::cuePointWithTime(12.5, "a"),
                                        ZALTagCuePoint::cuePointWithTime(1, "&<é>")};
    for (const auto& track : database->tracks()) {
        request(*queue, cues, track->path());
    }
    const bool succeeded = saved(*queue).success;
    const auto again = open(file.path());
    require(!succeeded || again->trackCount() == database->trackCount());
    readTracks(*again);
}

constexpr auto rekordbox = collection<ZALRekordboxDatabase, ZALRekordboxQueue,
                                      &ZALRekordboxDatabase::initWithRekordboxDatabaseFileAtURL,
                                      &ZALRekordboxDatabase::setUserRekordboxDatabaseFileURL>;
constexpr auto traktor =
    collection<ZALTraktorDatabase, ZALTraktorQueue, &ZALTraktorDatabase::initWithTraktorDatabaseFileAtURL,
               &ZALTraktorDatabase::setUserTraktorDatabaseFileURL>;

}  // namespace

extern const FuzzTarget fileTargets[] = {{"mp3_file", audio<mp3>},   {"mp4_file", audio<m4a>},
                                         {"wav_file", audio<wav>},   {"aiff_file", audio<aiff>},
                                         {"flac_file", audio<flac>}, {"dump_file", dump},
                                         {"copy_file", copy},        {"rekordbox_xml", rekordbox},
                                         {"traktor_nml", traktor},   {}};
