#pragma once

#include <zaltag/base/ZALJSONValue.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The members of a JSON object in the order in which they are printed.
using Members = std::vector<std::pair<std::string, ZALJSONValue>>;

/// One JSON object on a line. Bytes of a path that are not UTF-8 show as replacement characters.
std::string jsonObject(const Members& members);

/// A text fit for a terminal: what could move the cursor or end the line is escaped.
std::string printable(std::string_view text);

/// What the commands print, and how they end. Data goes to standard output, messages to standard error.
class Output {
  public:
    explicit Output(bool json) : json_(json) {}

    bool json() const { return json_; }
    /// Prints an object of the array that a JSON document is.
    void object(const Members& members);
    /// Prints a line of data.
    void line(std::string_view text);
    /// Prints one message.
    void message(std::string_view text);
    /// Notes that something failed and prints the one line about it; in JSON, an object with the path and the
    /// reason as well.
    void failure(const std::string& path, const std::string& reason);

    /// Notes that something failed that is no single file's matter, and prints the line about it.
    void problem(std::string_view text);

    /// Ends the document and gives the exit status: 0, or 1 after a failure.
    int finish();

  private:
    bool json_;
    bool started_ = false;
    bool failed_ = false;
};
