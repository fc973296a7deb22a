// A FLAC file, with or without ID3 tags, is opened, read, changed and saved.

#include "AudioFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    exerciseAudioFile(data, size, "flac");
    return 0;
}
