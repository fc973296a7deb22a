#pragma once

#include <aifffile.h>
#include <flacfile.h>
#include <id3v2tag.h>
#include <mp4file.h>
#include <mpegfile.h>
#include <wavfile.h>

#include <string>

/// Opens a file by its extension with TagLib's own class and hands it, with its tag, to a function.
template <typename Function>
bool withFile(const std::string& path, const Function& function) {
    const std::string extension = path.substr(path.rfind('.') + 1);
    if (extension == "mp3") {
        TagLib::MPEG::File file(path.c_str(), false);
        return function(file, file.ID3v2Tag(true));
    }
    if (extension == "m4a") {
        TagLib::MP4::File file(path.c_str(), false);
        return function(file, file.tag());
    }
    if (extension == "wav") {
        TagLib::RIFF::WAV::File file(path.c_str(), false);
        return function(file, file.ID3v2Tag());
    }
    if (extension == "aiff") {
        TagLib::RIFF::AIFF::File file(path.c_str(), false);
        return function(file, file.tag());
    }
    TagLib::FLAC::File file(path.c_str(), false);
    return function(file, file.xiphComment(true));
}
