#pragma once

#include "support/AudioFixtures.h"

#include <zaltag/base/ZALData.h>
#include <zaltag/serato/ZALBase64.h>

#include <cstdlib>
#include <string>

/// One thing that is fuzzed: a row of a table in main.cpp, with a corpus in fuzz/corpus/NAME.
struct FuzzTarget {
    const char* name;
    void (*run)(ZALDataView input);
};

/// Ends the run when an invariant does not hold.
inline void require(bool holds) {
    if (!holds) std::abort();
}

/// A file of these bytes in a folder of its own.
class FuzzedFile {
  public:
    FuzzedFile(ZALDataView bytes, const std::string& name) : path_(folder_.write(name, bytes)) {}
    const std::string& path() const { return path_; }
    bool holds(ZALDataView bytes) const { return contentsOf(path_) == ZALData(bytes.begin(), bytes.end()); }
    bool isAlone() const {
        return std::distance(std::filesystem::directory_iterator(folder_.path()), {}) == 1;
    }

  private:
    const TemporaryFolder folder_;
    const std::string path_;
};

inline ZALData bytesIn(ZALDataView view) {
    return {view.begin(), view.end()};
}
