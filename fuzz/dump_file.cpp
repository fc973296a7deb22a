// A file is described under the extension of every container.

#include "AudioFile.h"
#include "FuzzSupport.h"

#include <zaltag/tools/ZALTagDescription.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    for (const char* extension : {"mp3", "wav", "aiff", "m4a", "flac"}) {
        const FuzzedFile file(data, size, extension);
        const std::string report = ZALTagDescription(file.path());
        require(report.ends_with('\n') && ZALValidUTF8(report) == report);
    }
    return 0;
}
