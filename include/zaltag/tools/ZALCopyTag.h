#pragma once

#include <zaltag/base/ZALError.h>
#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALText.h>

// Copying all metadata of one audio file into another, as after processing the audio. Each function takes the
// paths of the source and of the destination, whatever their extensions. True when the destination was
// written, and when the source is empty: it then holds nothing of what the function copies, and nothing is
// written. False for a null path, without a message; and, with one log line that names the function and the
// file, for a file that is not of its type, for a source and a destination that are one file under two names,
// and for a destination that cannot be written or whose ID3v2 tag would be longer than its length, of 28
// bits, can say. The destination is then as it was. The source is never written, nor is any audio. An error
// that is asked for has the code ZALErrorCode::saveFailed and the reason as its description.
//
// ID3v2 frames are added behind those of the destination, byte for byte; what is there stays as it is. Only
// the genre takes the place of the one there, as the list that it is, numbers as names. Frames that belong to
// the old audio are left out: the comment "iTunNORM" and Serato's object "Serato Autotags". So are encrypted
// frames, with one log line. ID3v2 tags are written in version 2.4.
//
// Any thread, as long as nothing else writes the two files.

/// MP3 to MP3: the ID3v1 tag, whose fields take the place of those of the destination, and the ID3v2 frames.
/// No kind of tag of the destination goes.
ZALTAG_EXPORT bool ZALCopyTagID3(const ZALNullableString& source, const ZALNullableString& destination,
                                 ZALError* error = nullptr);

/// MP4 to MP4: every item, byte for byte, but iTunes's "iTunNORM" and "iTunSMPB", which belong
/// to the old audio. The destination's own items go.
ZALTAG_EXPORT bool ZALCopyTagMP4(const ZALNullableString& source, const ZALNullableString& destination,
                                 ZALError* error = nullptr);

/// MP4 to MP3: title, artist, album, comment (in the language "eng"), genre, year and track with the total
/// take the place of those of the destination's ID3v2 tag, and so do a tempo and a compilation flag that are
/// above 0. The covers are added to its pictures. The comment becomes the text of the first one without a
/// description, or of the first of all, and the language is that of the first; without one in the source
/// every comment of the destination goes. Its other frames stay; an ID3v1 tag that is there gets the same
/// texts.
ZALTAG_EXPORT bool ZALCopyTagMP42ID3(const ZALNullableString& source, const ZALNullableString& destination,
                                     ZALError* error = nullptr);

/// WAV to WAV: the ID3v2 frames and the first LIST chunk, byte for byte, which takes the place of the first
/// one of its type in the destination. Refused, with one log
/// line, when the destination's chunks are damaged.
ZALTAG_EXPORT bool ZALCopyTagWAV(const ZALNullableString& source, const ZALNullableString& destination,
                                 ZALError* error = nullptr);

/// AIFF to AIFF: the ID3v2 frames. Refused as above.
ZALTAG_EXPORT bool ZALCopyTagAIFF(const ZALNullableString& source, const ZALNullableString& destination,
                                  ZALError* error = nullptr);

/// FLAC to FLAC: the fields of the Xiph comment, in place of all those of the destination when the source has
/// any, byte for byte. Likewise the fields of an ID3v1 tag, and the ID3v2 frames. Pictures are not copied;
/// those of the destination stay.
ZALTAG_EXPORT bool ZALCopyTagFLAC(const ZALNullableString& source, const ZALNullableString& destination,
                                  ZALError* error = nullptr);

/// One of the functions above.
using ZALCopyTagFunction = bool (*)(const ZALNullableString& source, const ZALNullableString& destination,
                                    ZALError* error);

/// The function that copies between two files, by the extensions of their names; null when there is none for
/// such a pair.
ZALTAG_EXPORT ZALCopyTagFunction ZALCopyTagFunctionForPaths(const ZALNullableString& source,
                                                            const ZALNullableString& destination);
