#pragma once

#include <zaltag/base/ZALExport.h>

#include <optional>
#include <string>

/// How long an audio file plays, in seconds, as its headers say it; of an MP3 file without such a header, as
/// its first frames let it be reckoned. Null for files of other types, and when that cannot be read. Nothing
/// is logged. Any thread.
ZALTAG_EXPORT std::optional<double> ZALAudioDuration(const std::string& path);
