#pragma once

#include "id3/TagLibStream.h"

#include <zaltag/id3/ZALTagID3.h>

#include <id3v1tag.h>
#include <id3v2tag.h>
#include <mpegfile.h>

#include <memory>

/// What an object of the ID3 family holds open. The members are destroyed from the last to the first: the
/// TagLib file before the stream below it. The tags belong to the TagLib file.
struct ZALTagID3::State {
    std::unique_ptr<zal::TagLibStream> stream;
    std::unique_ptr<TagLib::MPEG::File> file;  // MP3 only; the other containers hold their own
    TagLib::ID3v1::Tag* v1Tag = nullptr;  // null when the file had none (in an MP3, none that held anything)
    TagLib::ID3v2::Tag* v2Tag = nullptr;  // null when a FLAC file had none
    bool requiresSaving = false;
};
