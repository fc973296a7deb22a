#pragma once

#include "containers/ZALFile.h"
#include "tools/Report.h"

#include <aifffile.h>
#include <flacfile.h>
#include <id3v1tag.h>
#include <id3v2tag.h>
#include <mp4file.h>
#include <mpegfile.h>

// The sections of a description.

namespace zal {

/// title, artist, album, comment and genre; year; track.
void describeStandardFields(Report& report, const TagLib::Tag& tag);
/// A line for every frame whose id a description knows, in the order of the tag.
void describeFrames(Report& report, const TagLib::ID3v2::Tag& tag);
/// The version and size of a tag as a title, then its frames.
void describeID3v2(Report& report, const TagLib::ID3v2::Tag& tag);
/// The section of an ID3v1 tag; a null tag is not found.
void describeID3v1(Report& report, const TagLib::ID3v1::Tag* tag);

// The sections of a whole file.
void describeMP3(Report& report, TagLib::MPEG::File& file);
void describeAIFF(Report& report, TagLib::RIFF::AIFF::File& file);
void describeWAV(Report& report, TagLib::RIFF::WAV::ZALFile& file);
void describeMP4(Report& report, TagLib::MP4::File& file);
void describeFLAC(Report& report, TagLib::FLAC::File& file);

}  // namespace zal
