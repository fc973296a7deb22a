#pragma once

namespace CLI {
class App;
}

#include <string>
#include <vector>

/// A title and names for a help text, over as many lines of a terminal as they need.
std::string wrapped(const std::string& title, const std::vector<std::string>& names);

/// Gives every command of the program the end of its help: examples, and the names that its arguments take.
void addExamples(CLI::App& program);
