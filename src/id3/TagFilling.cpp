#include "id3/TagFilling.h"

#include <algorithm>

namespace zal {

namespace {

struct TextField {
    const char* id;
    TagLib::String (TagLib::Tag::*text)() const;
    void (TagLib::Tag::*set)(const TagLib::String&);
};
constexpr TextField texts[] = {
    {"TIT2", &TagLib::Tag::title, &TagLib::Tag::setTitle},
    {"TPE1", &TagLib::Tag::artist, &TagLib::Tag::setArtist},
    {"TALB", &TagLib::Tag::album, &TagLib::Tag::setAlbum},
    {"TCON", &TagLib::Tag::genre, &TagLib::Tag::setGenre},
};

struct NumberField {
    const char* id;
    unsigned (TagLib::Tag::*number)() const;
    void (TagLib::Tag::*set)(unsigned);
};
constexpr NumberField numbers[] = {
    {"TDRC", &TagLib::Tag::year, &TagLib::Tag::setYear},
    {"TRCK", &TagLib::Tag::track, &TagLib::Tag::setTrack},
};

bool isASCII(const TagLib::String& text) {
    return std::all_of(text.begin(), text.end(), [](wchar_t unit) { return unit > 0 && unit < 0x80; });
}

}  // namespace

bool lacksFrame(const MP3File& file, const char* id) {
    return !file.v2().hadFrame(id) && std::ranges::all_of(file.v2Tags(), [id](const TagLib::ID3v2::Tag* tag) {
        return tag->frameList(id).isEmpty();
    });
}

bool fillFromID3v1(MP3File& file) {
    bool isFilled = false;
    const TagLib::Tag& v1 = file.v1()->tag();
    for (const TextField& field : texts) {
        const TagLib::String text = (v1.*field.text)();
        if (text.isEmpty() || !isASCII(text) || !lacksFrame(file, field.id)) continue;
        (file.v2().tagToEdit(field.id).*field.set)(text);
        isFilled = true;
    }
    for (const NumberField& field : numbers) {
        const unsigned number = (v1.*field.number)();
        if (number == 0 || !lacksFrame(file, field.id)) continue;
        (file.v2().tagToEdit(field.id).*field.set)(number);
        isFilled = true;
    }
    return isFilled;
}

}  // namespace zal
