#pragma once

#include <zaltag/base/ZALData.h>

#include <string>
#include <vector>

/// A format as the tests that hold for every container see it.
struct Format {
    const char* name;
    const char* extension;
    const char* className;
    ZALData (*file)();                          ///< a small file without tags
    ZALData (*audio)(const std::string& path);  ///< what a save must not change
    std::vector<std::string> missingFields{};   ///< those that setting leaves null
    /// Those that read as the empty text, not null, when the file holds none.
    std::vector<std::string> emptyFields{"initialKey", "comment"};
};

/// Every format the library opens.
const std::vector<Format>& formats();
