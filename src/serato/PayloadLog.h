#pragma once

#include "platform/Log.h"

#include <set>
#include <string_view>
#include <utility>

namespace zal {

/// The log of one payload: a complaint that comes up again is not repeated, so that a hostile payload cannot
/// flood the log. Complaints are told apart by their format, which is a literal.
class PayloadLog {
  public:
    template <typename... Arguments>
    void logf(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
        const fmt::string_view text = format;
        if (!said_.insert({text.data(), text.size()}).second) return;
        zal::logDamage(fmt::format(format, std::forward<Arguments>(arguments)...));
    }

  private:
    std::set<std::string_view> said_;
};

}  // namespace zal
