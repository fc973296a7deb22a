#pragma once

#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALText.h>

#include <string>

namespace TagLib::ID3v2 {
class Tag;
}
namespace TagLib::MP4 {
class Tag;
}

/// Everything a file's tags hold, as text for a person to read: every tag store that the file's type can have
/// (ID3v1, ID3v2 with its frames, the INFO list, MP4 items, the Xiph comment, pictures), with the library's
/// own records and Serato's payloads decoded. The type is that of the path's extension. The file is opened
/// for reading, and nothing changes.
///
/// Never fails: a path of another type, a file that cannot be read and a tag that is not there are a line of
/// the report each, and a payload that cannot be decoded reads "*UNREADABLE*" in it, with one log line. Text
/// from the file stands in the report as it is, control characters included. Times and tempos have six digits
/// at most (128.3, 1e+06), whatever the locale. Always UTF-8; every line ends in a line feed. Any thread.
ZALTAG_EXPORT std::string ZALTagDescription(const ZALNullableString& path);

// Called by the copying functions with the tags they are about to copy, and empty: there to set a breakpoint
// on. The tag can be null.

ZALTAG_EXPORT void ZALPrintV2Tag(const TagLib::ID3v2::Tag* tag);
ZALTAG_EXPORT void ZALPrintMP4Tag(const TagLib::MP4::Tag* tag);

#ifndef ZALTAG_NO_BARE_NAMES
inline void dprintV2Tag(const TagLib::ID3v2::Tag* tag) {
    ZALPrintV2Tag(tag);
}
inline void dprintMP4Tag(const TagLib::MP4::Tag* tag) {
    ZALPrintMP4Tag(tag);
}
#endif
