#pragma once

#include <string_view>

/// The page of `zaltag report` without its data, built in from the files of cli/report.
namespace reportPage {

/// The frame, with "{{style}}", "{{data}}" and "{{script}}" where the other parts go, in this order.
extern const std::string_view html;
extern const std::string_view style;
extern const std::string_view script;

}  // namespace reportPage
