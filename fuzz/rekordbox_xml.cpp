// A Rekordbox collection is loaded, read and saved; a batch of its queue changes every track.

#include "CollectionFile.h"

#include <zaltag/rekordbox/ZALRekordboxDatabase.h>
#include <zaltag/rekordbox/ZALRekordboxQueue.h>

namespace {

void request(ZALRekordboxQueue& queue, const ZALNullableString& path) {
    queue.setCuePoints(
        {ZALTagCuePoint::cuePointWithTime(12.5, "a"), ZALTagCuePoint::cuePointWithTime(1, "&<é>")}, path,
        true, true);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    exerciseCollection(data, size, ZALRekordboxDatabase::initWithRekordboxDatabaseFileAtURL,
                       ZALRekordboxDatabase::setUserRekordboxDatabaseFileURL, request);
    return 0;
}
