// An AIFF file is opened, read, changed, saved, and cleared.

#include "AudioFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    AudioFileExercise(data, size, "aiff").run();
    return 0;
}
