#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALText.h>
#include <zaltag/tools/ZALCopyTag.h>

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

/// A format as the tests that hold for every container see it.
struct Format {
    const char* name;
    const char* extension;
    const char* className;
    ZALData (*file)();                          ///< a small file without tags
    ZALData (*audio)(const std::string& path);  ///< what a save must not change
    /// A file with these records of Serato: markers of the second version, and a grid.
    ZALData (*withSerato)(const ZALData& markers, const ZALData& grid);
    std::vector<std::string> missingFields{};  ///< those that setting leaves null
    /// Those that read as the empty text, not null, when the file holds none.
    std::vector<std::string> emptyFields{"initialKey", "comment"};
};

inline void PrintTo(const Format& format, std::ostream* out) {
    *out << format.name;
}

/// Every format the library opens.
const std::vector<Format>& formats();
/// The one whose files have this extension.
const Format& formatOf(std::string_view extension);

/// A function that copies the tags of one file into another, and the extensions of both.
struct Copier {
    const char* from;
    const char* to;
    ZALCopyTagFunction copy;
};
const std::vector<Copier>& copiers();
