#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/platform/ZALHost.h>
#include <zaltag/serato/ZALBase64.h>

#include <cstdlib>
#include <string>
#include <string_view>

/// The log's lines are dropped: a fuzz target only looks at results.
inline const bool logIsSilent = [] {
    ZALHost::shared().setLogSink([](const std::string&) {});
    return true;
}();

/// Ends the run when an invariant does not hold.
inline void require(bool holds) {
    if (!holds) std::abort();
}

/// Bytes behind a prefix.
inline ZALData joined(std::string_view prefix, ZALDataView bytes) {
    ZALData out(prefix.begin(), prefix.end());
    out.insert(out.end(), bytes.begin(), bytes.end());
    return out;
}

/// The encoded form of a record, made without the code under test, so that inputs of bytes reach the parser.
inline ZALData encodedForm(ZALDataView record) {
    return dataByEncodingBase64(joined(std::string(42, ' '), record)).value();
}
