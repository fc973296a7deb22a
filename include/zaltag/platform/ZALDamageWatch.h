#pragma once

#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALText.h>

#include <string>

namespace zal {
void logDamage(const std::string& line);
}

/// Tells, as long as it lives, what the thread that made it found damaged while it read payloads of tags:
/// such a payload reads as if it were not there. Of several watches of one thread the innermost is told.
class ZALTAG_EXPORT ZALDamageWatch {
  public:
    ZALDamageWatch();
    ~ZALDamageWatch();
    ZALDamageWatch(const ZALDamageWatch&) = delete;
    ZALDamageWatch& operator=(const ZALDamageWatch&) = delete;

    /// The first complaint; null when there was none. Each is a line of the log as well, unless
    /// ZALHost::setLogsFailures() says otherwise.
    const ZALNullableString& firstDamage() const { return firstDamage_; }

  private:
    friend void zal::logDamage(const std::string& line);
    ZALDamageWatch* const outer_;
    ZALNullableString firstDamage_;
};
