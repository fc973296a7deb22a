// A Traktor collection is loaded, read and saved; a batch of its queue changes every track.

#include "CollectionFile.h"

#include <zaltag/traktor/ZALTraktorDatabase.h>
#include <zaltag/traktor/ZALTraktorQueue.h>

namespace {

void request(ZALTraktorQueue& queue, const ZALNullableString& path) {
    queue.setCuePoints(
        {ZALTagCuePoint::cuePointWithTime(12.5, "a"), ZALTagCuePoint::cuePointWithTime(1, "&<é>")}, path);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    exerciseCollection(data, size, ZALTraktorDatabase::initWithTraktorDatabaseFileAtURL,
                       ZALTraktorDatabase::setUserTraktorDatabaseFileURL, request);
    return 0;
}
