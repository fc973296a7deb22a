#pragma once

#include <zaltag/base/ZALData.h>

#include <functional>
#include <string>
#include <vector>

/// One save that is tried with every fault. Every format of formats() has some in saveCases(); a save that
/// differs from them is one more row there.
struct SaveCase {
    std::string name;               ///< also the file's name, with its extension
    std::function<ZALData()> file;  ///< before the save
    /// Opens the file and edits it; what it returns saves. Empty when the file does not open.
    using Edit = std::function<std::function<bool()>(const std::string& path)>;
    Edit openAndEdit;
    /// For a save that replaces the file twice, what saves only its first or its second half. The result is
    /// that of the first one, and both are tried.
    Edit firstHalf = {};
    Edit secondHalf = {};
};

/// The saves of the library.
const std::vector<SaveCase>& saveCases();

/// What one run of faults found.
struct FaultResult {
    int points = 0;                   ///< how many operations were made to fail
    std::vector<std::string> damage;  ///< a line for each promise that was broken after one of them
};

/// Fails the n-th operation on the host's file system, for every n until the save succeeds. Each time the
/// file must be the old one or the complete new one, as the save's result says, with nothing beside it; and
/// the same object must save afterwards. Each half of a save in two halves is old or new by itself.
FaultResult tryFaults(const SaveCase& row);

/// What happens to the n-th system call that changes something.
enum class OutsideFault { failing, killing };

/// The same from outside: the program tests/shim/save_one.cpp saves, and a preloaded library makes its calls
/// fail or kills it there. What a kill leaves beside the file must go with the next save.
FaultResult tryOutsideFaults(const SaveCase& row, OutsideFault fault);
