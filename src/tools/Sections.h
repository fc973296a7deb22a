#pragma once

#include "files/FLACFile.h"
#include "files/FormFile.h"
#include "files/MP3File.h"
#include "files/MP4File.h"
#include "tools/Report.h"

#include <id3v1tag.h>
#include <id3v2tag.h>

#include <vector>

// The sections of a description.

namespace zal {

/// title, artist, album, comment and genre; year; track: each of the first tag that has it.
void describeStandardFields(Report& report, const std::vector<const TagLib::Tag*>& tags);
/// A line for every frame whose id a description knows, in the order of the tag.
void describeFrames(Report& report, const TagLib::ID3v2::Tag& tag);
/// The version and size of a tag as a title, then its frames.
void describeID3v2(Report& report, const TagLib::ID3v2::Tag& tag);
/// The section of an ID3v1 tag; a null tag is not found.
void describeID3v1(Report& report, const TagLib::ID3v1::Tag* tag);

// The sections of a whole file.
void describeMP3(Report& report, MP3File& file);
void describeAIFF(Report& report, FormFile& file);
void describeWAV(Report& report, FormFile& file);
void describeMP4(Report& report, MP4File& file);
void describeFLAC(Report& report, FLACFile& file);

}  // namespace zal
