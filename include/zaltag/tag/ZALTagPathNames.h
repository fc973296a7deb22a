#pragma once

#include <zaltag/base/ZALExport.h>

#include <string>

// Artist and title of a file without tags, guessed from a name like "Artist - Title.mp3". The first " - "
// separates them; both are trimmed of blanks. Any thread.

/// The part before the separator; empty when there is none.
ZALTAG_EXPORT std::string ZALTagArtistFromPath(const std::string& path);

/// The part after the separator, further separators included; the whole name when there is none.
ZALTAG_EXPORT std::string ZALTagNameFromPath(const std::string& path);
