#pragma once

#include <optional>
#include <string>

/// A text in UTF-8 that can be absent. Null (no value) and the empty text are different things wherever a
/// file can tell them apart. File paths use the same type; they are bytes, as the file system has them.
using ZALNullableString = std::optional<std::string>;
