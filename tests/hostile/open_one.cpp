// Opens one audio file, reads everything, sets a field and saves: by this library, or, as "raw", by TagLib
// alone. Prints what became of it: "null", "refused" or "saved"; ends with 0 when that is as it must be.

#include <aifffile.h>
#include <flacfile.h>
#include <mp4file.h>
#include <mpegfile.h>
#include <tag.h>
#include <tpropertymap.h>
#include <wavfile.h>

#include "AudioFile.h"

#include <zaltag/tag/ZALTag.h>

#include <cstdio>
#include <cstring>

namespace {

int said(const char* word, bool isRight = true) {
    std::puts(word);
    return isRight ? 0 : 3;
}

int tryLibrary(const std::string& path) {
    int lines = 0;
    ZALHost::shared().setLogSink([&lines](const std::string&) { ++lines; });
    const auto tag = ZALTag::tagAtPath(path);
    if (tag == nullptr) return said("null");
    readEverything(*tag);
    tag->allImages();
    tag->setTitle("another");
    tag->setZalKey(ZALTagKey::keyWithKey("8A", 1));
    tag->setSeratoCuePoints({ZALTagCuePoint::cuePointWithTime(1.5, "cue")});
    lines = 0;
    ZALError error;
    if (!tag->save(&error)) return said("refused", lines == 1 && error.code == ZALErrorCode::saveFailed);
    const auto again = ZALTag::tagAtPath(path);
    return said("saved",
                again != nullptr && again->title() == "another" && !again->seratoCuePoints().empty());
}

std::unique_ptr<TagLib::File> rawFile(const std::string& path) {
    const char* name = path.c_str();
    const std::string extension = path.substr(path.rfind('.') + 1);
    if (extension == "mp3") return std::make_unique<TagLib::MPEG::File>(name);
    if (extension == "m4a") return std::make_unique<TagLib::MP4::File>(name);
    if (extension == "wav") return std::make_unique<TagLib::RIFF::WAV::File>(name);
    if (extension == "aiff") return std::make_unique<TagLib::RIFF::AIFF::File>(name);
    return std::make_unique<TagLib::FLAC::File>(name);
}

int tryRaw(const std::string& path) {
    const auto file = rawFile(path);
    if (!file->isValid() || file->tag() == nullptr) return said("null");
    file->properties();
    file->tag()->setTitle("another");
    return said(file->save() ? "saved" : "refused");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    return std::strcmp(argv[1], "raw") == 0 ? tryRaw(argv[2]) : tryLibrary(argv[2]);
}
