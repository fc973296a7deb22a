// A Rekordbox collection is loaded, read and saved.

#include "CollectionFile.h"

#include <zaltag/rekordbox/ZALRekordboxDatabase.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    exerciseCollection(data, size, ZALRekordboxDatabase::initWithRekordboxDatabaseFileAtURL);
    return 0;
}
