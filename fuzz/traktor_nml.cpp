// A Traktor collection is loaded, read and saved.

#include "CollectionFile.h"

#include <zaltag/traktor/ZALTraktorDatabase.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    exerciseCollection(data, size, ZALTraktorDatabase::initWithTraktorDatabaseFileAtURL);
    return 0;
}
