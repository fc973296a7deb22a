#pragma once

#include "taglib/TagLibText.h"

#include <fmt/format.h>

#include <iterator>
#include <string>
#include <string_view>
#include <utility>

namespace zal {

/// The text of a description as it grows, and the forms that its lines have.
class Report {
  public:
    template <typename... Arguments>
    void line(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
        fmt::format_to(std::back_inserter(text_), format, std::forward<Arguments>(arguments)...);
        text_ += '\n';
    }

    /// A title and a line of dashes as long.
    void title(std::string_view title) { line("{}\n{:-<{}}", title, "", title.size()); }
    /// "artist  - 'Name'".
    void text(std::string_view label, const TagLib::String& text) {
        line("{:<8}- '{}'", label, stringWithTagLibString(text));
    }
    /// "tempo   -  128": what needs no quotes.
    template <typename Value>
    void value(std::string_view label, const Value& value) {
        line("{:<8}-  {}", label, value);
    }

    const std::string& text() const { return text_; }

  private:
    std::string text_;
};

}  // namespace zal
