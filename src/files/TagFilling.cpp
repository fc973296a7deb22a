#include "files/TagFilling.h"

#include "base/Unicode.h"
#include "stores/ID3v1Fields.h"
#include "stores/ID3v2Fields.h"
#include "taglib/TagLibText.h"

#include <algorithm>

namespace zal {

namespace {

constexpr std::pair<TextField, const char*> texts[] = {{TextField::title, "TIT2"},
                                                       {TextField::artist, "TPE1"},
                                                       {TextField::album, "TALB"},
                                                       {TextField::genre, "TCON"},
                                                       {TextField::comment, "COMM"}};

bool lacksFrame(const MP3File& file, const char* id) {
    return !file.v2().hadFrame(id) && std::ranges::all_of(file.v2Tags(), [id](const TagLib::ID3v2::Tag* tag) {
        return tag->frameList(id).isEmpty();
    });
}

// Without the blanks with which some programs fill a comment to its end.
std::string textOf(const TagStore& v1, TextField field) {
    const TagLib::String text = TagLibString(v1.text(field));
    return stringWithTagLibString(field == TextField::comment ? text.stripWhiteSpace() : text);
}

}  // namespace

bool fillFromID3v1(MP3File& file) {
    bool isFilled = false;
    const TagLib::ID3v1::Tag& v1 = file.v1()->tag();
    const ID3v1Fields from(file.v1()->tag());
    ID3v2Fields to(file.v2());
    for (const auto& [field, frame] : texts) {
        const std::string text = textOf(from, field);
        if (text.empty() || !isASCII(text) || !lacksFrame(file, frame)) continue;
        to.setText(field, text);
        isFilled = true;
    }
    if (v1.year() != 0 && lacksFrame(file, "TDRC")) {
        file.v2().tagToEdit("TDRC").setYear(v1.year());
        isFilled = true;
    }
    if (v1.track() != 0 && lacksFrame(file, "TRCK")) {
        file.v2().tagToEdit("TRCK").setTrack(v1.track());
        isFilled = true;
    }
    return isFilled;
}

}  // namespace zal
