// An AIFF file is opened, read, changed and saved.

#include "AudioFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    exerciseAudioFile(data, size, "aiff");
    return 0;
}
