// What a tag object sees of its track in the collections of other programs.

#include <zaltag/rekordbox/ZALRekordboxDatabase.h>
#include <zaltag/rekordbox/ZALRekordboxQueue.h>
#include <zaltag/tag/ZALTag.h>
#include <zaltag/traktor/ZALTraktorDatabase.h>
#include <zaltag/traktor/ZALTraktorQueue.h>

namespace {

using CuePoints = ZALArray<ZALTagCuePoint>;

bool isHeld(const std::optional<CuePoints>& held, const CuePoints& cuePoints) {
    return held && held->isSameObject(cuePoints);
}

// Those of a file's track in a collection; none when it is not there.
CuePoints cuePointsIn(const ZALCollectionDatabase& database, const ZALNullableString& path, ZALCueKind kind) {
    const auto track = database.track(path);
    return track ? track->cuePoints(kind) : CuePoints();
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
    return traktorCuePoints_.emplace(
        cuePointsIn(*ZALTraktorDatabase::sharedDatabase(), path(), ZALCueKind::all));
}

void ZALTag::setTraktorCuePoints(const CuePoints& cuePoints) {
    if (isHeld(traktorCuePoints_, cuePoints)) return;
    traktorCuePoints_ = cuePoints;
    ZALTraktorQueue::sharedQueue()->setCuePoints(cuePoints, path());
}

CuePoints ZALTag::rekordboxHotCuePoints() {
    return rekordboxHotCuePoints_.emplace(
        cuePointsIn(*ZALRekordboxDatabase::sharedDatabase(), path(), ZALCueKind::hot));
}

CuePoints ZALTag::rekordboxMemoryCuePoints() {
    return rekordboxMemoryCuePoints_.emplace(
        cuePointsIn(*ZALRekordboxDatabase::sharedDatabase(), path(), ZALCueKind::memory));
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
