#include "platform/Log.h"

#include <zaltag/platform/ZALDamageWatch.h>
#include <zaltag/platform/ZALHost.h>

#include <fmt/format.h>

#include <iterator>
#include <utility>

namespace {

thread_local ZALDamageWatch* watch = nullptr;  // the innermost one

}  // namespace

ZALDamageWatch::ZALDamageWatch() : outer_(std::exchange(watch, this)) {}

ZALDamageWatch::~ZALDamageWatch() {
    watch = outer_;
}

namespace zal {

void log(const std::string& line) {
    ZALHost::shared().log(line);
}

void logFailure(const std::string& line) {
    if (ZALHost::shared().logsFailures()) log(line);
}

void logDamage(const std::string& line) {
    if (watch == nullptr) return log(line);
    if (!watch->firstDamage_) watch->firstDamage_ = line;
    logFailure(line);
}

std::string describe(ZALDataView bytes) {
    constexpr std::size_t group = 4;
    std::string out = "<";
    for (; bytes.size() > group; bytes = bytes.subspan(group)) {
        fmt::format_to(std::back_inserter(out), "{:02x} ", fmt::join(bytes.first(group), ""));
    }
    return fmt::format("{}{:02x}>", out, fmt::join(bytes, ""));
}

std::string describe(const ZALNullableString& text) {
    return text.value_or("(null)");
}

}  // namespace zal
