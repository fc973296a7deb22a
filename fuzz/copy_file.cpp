// The tags of one file are copied into another: the first byte chooses the function, the next two are the
// length of the source.

#include "AudioFile.h"
#include "FuzzSupport.h"

#include <zaltag/tools/ZALCopyTag.h>

#include <algorithm>
#include <iterator>

namespace {

struct Copier {
    const char* source;
    const char* destination;
    bool (*copy)(const ZALNullableString& source, const ZALNullableString& destination);
};

constexpr Copier copiers[] = {
    {"source.mp3", "mp3", ZALCopyTagID3},     {"source.m4a", "m4a", ZALCopyTagMP4},
    {"source.m4a", "mp3", ZALCopyTagMP42ID3}, {"source.wav", "wav", ZALCopyTagWAV},
    {"source.aiff", "aiff", ZALCopyTagAIFF},  {"source.flac", "flac", ZALCopyTagFLAC},
};

bool holds(const FuzzedFile& file, ZALDataView bytes) {
    return contentsOf(file.path()) == ZALData(bytes.begin(), bytes.end());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 3) return 0;
    const Copier& copier = copiers[data[0] % std::size(copiers)];
    const ZALDataView both(data + 3, size - 3);
    const std::size_t length = std::min<std::size_t>(data[1] * 256U + data[2], both.size());
    const ZALDataView before = both.subspan(length);
    const FuzzedFile source(data + 3, length, copier.source);
    const FuzzedFile destination(before.data(), before.size(), copier.destination);
    const bool copied = copier.copy(source.path(), destination.path());
    require(holds(source, both.first(length)));
    require(copied ? ZALTag::tagAtPath(destination.path()) != nullptr : holds(destination, before));
    return 0;
}
