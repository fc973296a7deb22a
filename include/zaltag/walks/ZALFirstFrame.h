#pragma once

#include <zaltag/base/ZALExport.h>

#include <optional>
#include <string>

/// How the first MPEG frame of an MP3 file begins. Encoders put a header of their own into it, and programs
/// do not agree on whether such a frame is heard: Traktor and Rekordbox count the time of one file in fifteen
/// or so from places that are a frame apart. A value.
struct ZALTAG_EXPORT ZALFirstFrame {
    enum class Case : char {
        a = 'A',  ///< no such header: neither "Xing" nor "Info"
        b = 'B',  ///< one without a whole tag of LAME behind it, as FFmpeg writes it
        c = 'C',  ///< with a tag of LAME whose checksum is 0 or wrong
        d = 'D',  ///< with a tag of LAME whose checksum is right
    };

    Case kind = Case::a;
    double duration = 0;  ///< of the frame, in seconds

    /// Traktor's time of a place in the track less Rekordbox's, in seconds: the duration in the cases B and
    /// C, 0 in the others. From Traktor to Rekordbox it is subtracted, the other way added.
    double traktorOffset() const { return kind == Case::b || kind == Case::c ? duration : 0; }

    /// That of a file, whose first frame lies within the first mebibyte behind the tags in front. Null for
    /// files of other names than ".mp3", and where there is no frame or none that can be read. Nothing is
    /// logged. Any thread.
    static std::optional<ZALFirstFrame> ofFile(const std::string& path);
};
