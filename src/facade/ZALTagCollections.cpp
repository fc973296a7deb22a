// What a tag object sees of its track in the collections of other programs.

#include <zaltag/rekordbox/ZALRekordboxDatabase.h>
#include <zaltag/rekordbox/ZALRekordboxQueue.h>
#include <zaltag/tag/ZALTag.h>
#include <zaltag/traktor/ZALTraktorDatabase.h>
#include <zaltag/traktor/ZALTraktorQueue.h>

namespace {

using CuePoints = ZALArray<ZALTagCuePoint>;

constexpr std::int64_t traktorGridType = 4;
constexpr std::int64_t memoryCueNum = -1;

bool isHeld(const std::optional<CuePoints>& held, const CuePoints& cuePoints) {
    return held && held->isSameObject(cuePoints);
}

CuePoints rekordboxCuePoints(const ZALNullableString& path, bool memory) {
    std::vector<ZALTagCuePoint> found;
    if (const auto track = ZALRekordboxDatabase::sharedDatabase()->trackForSongFileAtURL(path)) {
        for (const ZALRekordboxCuePoint& cue : track->cues()) {
            if ((cue.num() == memoryCueNum) != memory) continue;
            found.push_back(ZALTagCuePoint::cuePointWithTime(cue.start(), cue.name()));
        }
    }
    return found;
}

}  // namespace

bool ZALTag::isTraktorDBAvailable() {
    return ZALTraktorDatabase::sharedDatabase()->isTraktorDBLoaded();
}

bool ZALTag::canExportToTraktor(ZALError* error) {
    return ZALTraktorDatabase::canExportToTraktor(error);
}

void ZALTag::reloadTraktorDBWithCompletionBlock(ZALCompletion completion) {
    ZALTraktorQueue::sharedQueue()->reload(std::move(completion));
}

void ZALTag::saveTraktorDBWithCompletionBlock(ZALCompletion completion) {
    ZALTraktorQueue::sharedQueue()->save(std::move(completion));
}

void ZALTag::cancelSaveTraktorDB() {
    ZALTraktorQueue::sharedQueue()->cancel();
}

bool ZALTag::isRekordboxDBAvailable() {
    return ZALRekordboxDatabase::sharedDatabase()->isRekordboxDBLoaded();
}

bool ZALTag::canExportToRekordbox(ZALError* error) {
    return ZALRekordboxDatabase::canExportToRekordbox(error);
}

void ZALTag::reloadRekordboxDBWithCompletionBlock(ZALCompletion completion) {
    ZALRekordboxQueue::sharedQueue()->reload(std::move(completion));
}

void ZALTag::saveRekordboxDBWithCompletionBlock(ZALCompletion completion) {
    ZALRekordboxQueue::sharedQueue()->save(std::move(completion));
}

void ZALTag::cancelSaveRekordboxDB() {
    ZALRekordboxQueue::sharedQueue()->cancel();
}

bool ZALTag::isInTraktorDB() const {
    return ZALTraktorDatabase::sharedDatabase()->hasTrackForSongFileAtURL(path());
}

bool ZALTag::isInRekordboxDB() const {
    return ZALRekordboxDatabase::sharedDatabase()->hasTrackForSongFileAtURL(path());
}

CuePoints ZALTag::traktorCuePoints() {
    std::vector<ZALTagCuePoint> found;
    if (const auto track = ZALTraktorDatabase::sharedDatabase()->trackForSongFileAtURL(path())) {
        for (const ZALTraktorCuePoint& cue : track->cues()) {
            if (cue.type() == traktorGridType) continue;
            found.push_back(ZALTagCuePoint::cuePointWithTime(cue.startTime(), cue.name()));
        }
    }
    return traktorCuePoints_.emplace(std::move(found));
}

void ZALTag::setTraktorCuePoints(const CuePoints& cuePoints) {
    if (isHeld(traktorCuePoints_, cuePoints)) return;
    traktorCuePoints_ = cuePoints;
    ZALTraktorQueue::sharedQueue()->setCuePoints(cuePoints, path());
}

CuePoints ZALTag::rekordboxHotCuePoints() {
    return rekordboxHotCuePoints_.emplace(rekordboxCuePoints(path(), false));
}

CuePoints ZALTag::rekordboxMemoryCuePoints() {
    return rekordboxMemoryCuePoints_.emplace(rekordboxCuePoints(path(), true));
}

void ZALTag::setRekordboxHotCuePoints(const CuePoints& cuePoints) {
    if (isHeld(rekordboxHotCuePoints_, cuePoints)) return;
    rekordboxHotCuePoints_ = cuePoints;
    ZALRekordboxQueue::sharedQueue()->setCuePoints(cuePoints, path(), true, false);
}

void ZALTag::setRekordboxMemoryCuePoints(const CuePoints& cuePoints) {
    if (isHeld(rekordboxMemoryCuePoints_, cuePoints)) return;
    rekordboxMemoryCuePoints_ = cuePoints;
    ZALRekordboxQueue::sharedQueue()->setCuePoints(cuePoints, path(), false, true);
}

void ZALTag::setRekordboxHotAndMemoryCuePoints(const CuePoints& cuePoints) {
    if (isHeld(rekordboxHotCuePoints_, cuePoints) && isHeld(rekordboxMemoryCuePoints_, cuePoints)) return;
    rekordboxHotCuePoints_ = cuePoints;
    rekordboxMemoryCuePoints_ = cuePoints;
    ZALRekordboxQueue::sharedQueue()->setCuePoints(cuePoints, path(), true, true);
}
