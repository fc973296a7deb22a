#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALText.h>

#include <fmt/format.h>

#include <string>
#include <utility>

namespace zal {

/// Writes one line to the host's log.
void log(const std::string& line);

/// Formats one line and writes it to the host's log.
template <typename... Arguments>
void logf(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    log(fmt::format(format, std::forward<Arguments>(arguments)...));
}

/// The same for a failure that the caller is told, too: ZALHost::setLogsFailures() may leave it out.
void logFailure(const std::string& line);

/// The same for what a payload cannot be read of: ZALDamageWatch is told, too.
void logDamage(const std::string& line);

/// Bytes as the log shows them: "<0123abcd 4567>", groups of four bytes.
std::string describe(ZALDataView bytes);

/// A text as the log shows it: itself, or "(null)".
std::string describe(const ZALNullableString& text);

}  // namespace zal
