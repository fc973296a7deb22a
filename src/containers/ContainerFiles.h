#pragma once

#include "containers/ZALFile.h"
#include "id3/TagLibStream.h"

#include <flacfile.h>
#include <mp4file.h>

#include <memory>
#include <string>

// TagLib's files of the containers, opened and written with the checks that TagLib does not make. None reads
// audio properties.

namespace zal {

struct MP4File final : TagLib::MP4::File {
    using File::File;

    bool writable = false;  ///< a save changes nothing but the tag
};
/// The stream's file as an MP4 file; null when it is none, and when TagLib must not see it.
std::unique_ptr<MP4File> mp4File(TagLibStream& stream);
/// Has TagLib write the tag into the stream. False, with one log line, when the file is not writable.
bool writeMP4File(MP4File& file, const std::string& path);

/// The stream's file as a FLAC file, with or without ID3 tags; null as above.
std::unique_ptr<TagLib::FLAC::File> flacFile(TagLibStream& stream);
/// Has TagLib write the tags into the stream. False, with one log line, when a metadata block or the ID3v2
/// tag would be longer than its length can say.
bool writeFLACFile(TagLib::FLAC::File& file, const std::string& path);

/// The stream's file as a WAV file; null as above. The fields of its INFO list that are not UTF-8, which
/// TagLib reads as empty and would drop with the next save, are read as Latin-1.
std::unique_ptr<TagLib::RIFF::WAV::ZALFile> wavFile(TagLibStream& stream);

}  // namespace zal
