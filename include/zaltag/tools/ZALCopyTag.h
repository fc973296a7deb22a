#pragma once

#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALText.h>

// Copying all metadata of one audio file into another, as after processing the audio. Each function takes the
// paths of the source and of the destination, whatever their extensions. True when the destination was
// written, and where a function says so when there was nothing to copy. False for a null path, without a
// message; and, with one log line that names the function and the file, for a file that is not of its type,
// for a source and a destination that are one file under two names, and for a destination that cannot be
// written. The destination is then as it was. The source is never written, nor is any audio.
//
// ID3v2 frames are added behind those of the destination, which stay; only the genre takes the place of the
// one there, as the text that TagLib makes of it. Frames that belong to the old audio are left out: the
// comment "iTunNORM" and Serato's object "Serato Autotags". ID3v2 tags are written in version 2.4.
//
// Any thread, as long as nothing else writes the two files.

/// MP3 to MP3: the ID3v1 tag, whose fields take the place of those of the destination, and the ID3v2 frames.
/// Afterwards the destination has the kinds of tags that the source has, and no others. True, and nothing is
/// written, when the source has neither tag or both are empty.
ZALTAG_EXPORT bool ZALCopyTagID3(const ZALNullableString& source, const ZALNullableString& destination);

/// MP4 to MP4: every item but iTunes's "iTunNORM" and "iTunSMPB", which belong to the old audio. The
/// destination's own items go.
ZALTAG_EXPORT bool ZALCopyTagMP4(const ZALNullableString& source, const ZALNullableString& destination);

/// MP4 to MP3: title, artist, album, comment (in the language "eng"), genre, year and track with the total
/// take the place of those of the destination's ID3v2 tag, and so do a tempo and a compilation flag that are
/// not 0. The covers are added to its pictures. Its other frames stay, as does an ID3v1 tag.
ZALTAG_EXPORT bool ZALCopyTagMP42ID3(const ZALNullableString& source, const ZALNullableString& destination);

/// WAV to WAV: the ID3v2 frames and the first LIST chunk, byte for byte, which takes the place of the first
/// one of the destination. The destination's INFO list goes in any case. Refused, with one log line, when the
/// destination's chunks are damaged.
ZALTAG_EXPORT bool ZALCopyTagWAV(const ZALNullableString& source, const ZALNullableString& destination);

/// AIFF to AIFF: the ID3v2 frames. True, and nothing is written, when the source has none. Refused as above.
ZALTAG_EXPORT bool ZALCopyTagAIFF(const ZALNullableString& source, const ZALNullableString& destination);

/// FLAC to FLAC: the fields of the Xiph comment, in place of all those of the destination when the source has
/// any; one that the destination does not take is one log line. Likewise the fields of an ID3v1 tag, and the
/// ID3v2 frames. Pictures are not copied; those of the destination stay.
ZALTAG_EXPORT bool ZALCopyTagFLAC(const ZALNullableString& source, const ZALNullableString& destination);
