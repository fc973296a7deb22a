#pragma once

#include <string>
#include <vector>

namespace zal {

/// The names of the executables that other processes run, without folders, each once and in order, as a
/// folder like /proc tells them. A process that looks like a program of another system has two: that of the
/// layer that runs it and, from its first argument, its own. No other argument is looked at.
std::vector<std::string> runningPrograms(const std::string& processes = "/proc");

}  // namespace zal
