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
};

/// Every format the library opens.
const std::vector<Format>& formats();
