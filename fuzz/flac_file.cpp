// A FLAC file, with or without ID3 tags, is opened, read, changed, saved, and cleared.

#include "AudioFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    AudioFileExercise(data, size, "flac").run();
    return 0;
}
