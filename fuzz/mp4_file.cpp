// An MP4 file is opened, read, changed, saved, and cleared.

#include "AudioFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    AudioFileExercise(data, size, "m4a").run();
    return 0;
}
