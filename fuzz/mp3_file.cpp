// An MP3 file, with ID3v2, ID3v1 and APE tags or without, is opened, read, changed, saved, and cleared.

#include "AudioFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    AudioFileExercise(data, size, "mp3").run();
    return 0;
}
