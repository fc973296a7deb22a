#pragma once

#include <zaltag/base/ZALExport.h>

#include <optional>
#include <string>
#include <string_view>

/// A text in UTF-8 that can be absent. Null (no value) and the empty text are different things wherever a
/// file can tell them apart. File paths use the same type; they are bytes, as the file system has them.
using ZALNullableString = std::optional<std::string>;

/// The text itself when it is well-formed UTF-8, else the text with U+FFFD for every malformed sequence: what
/// to show of a path.
ZALTAG_EXPORT std::string ZALValidUTF8(std::string_view bytes);
