#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// A mistake in the command line, found before anything is touched. It ends the command: main() prints it.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The words of a command that takes files and then assignments.
struct FilesAndAssignments {
    std::vector<std::string> files;
    std::vector<std::pair<std::string, std::string>> assignments;  ///< name and value, in the order given
};

/// Tells files from assignments: a word is an assignment when what stands before its first "=" is a name and
/// no file of that whole name exists. Throws UsageError for a word behind an assignment that is none, and for
/// one that was surely meant as an assignment, so that a typing error is never taken for a file.
FilesAndAssignments splitWords(const std::vector<std::string>& words,
                               const std::function<bool(const std::string&)>& isName);

/// The name of the list that is closest to a mistyped one; empty when none is close.
std::string closestName(const std::string& mistyped, const std::vector<std::string>& names);
