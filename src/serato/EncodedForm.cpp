#include "serato/EncodedForm.h"

#include <zaltag/serato/ZALBase64.h>

#include "base/Endian.h"
#include "platform/Log.h"

namespace zal {

namespace {

// The legacy record names "Serato Markers2" too, as the files have it.
constexpr std::string_view header("application/octet-stream\0\0Serato Markers2\0", 42);

}  // namespace

ZALNullableData recordFromEncodedForm(ZALDataView encoded, std::string_view kind) {
    ZALNullableData decoded = ZALDataByDecodingBase64(encoded);
    if (!decoded || decoded->size() < header.size()) {
        logDamage(
            fmt::format("Failed to decode {} data: {} ({} bytes)", kind, describe(encoded), encoded.size()));
        return std::nullopt;
    }
    decoded->erase(decoded->begin(), decoded->begin() + header.size());
    return decoded;
}

ZALNullableData encodedFormOfMarkers(ZALDataView record) {
    ByteWriter out;
    out.text(header);
    out.bytes(record);
    ZALNullableData encoded = ZALDataByEncodingBase64(out.data());
    if (!encoded) logf("Failed to encode {} ({})", describe(out.data()), out.size());
    return encoded;
}

}  // namespace zal
