#include <zaltag/serato/ZALBase64.h>

#include "platform/Log.h"

#include <limits>
#include <new>
#include <stdexcept>

extern "C" {
#include <b64/cdecode.h>
#include <b64/cencode.h>
}

namespace {

// The codec below counts in int; what it cannot count is memory that cannot be had.
constexpr std::size_t longestInput = std::numeric_limits<int>::max() / 2;

ZALNullableData workingBuffer(std::size_t inputLength, std::size_t length) {
    try {
        if (inputLength <= longestInput) return ZALData(length);
    } catch (const std::bad_alloc&) {
    } catch (const std::length_error&) {
    }
    zal::logf("failed to allocate {} bytes",
              4 * inputLength);  // the stated figure, not the size of the buffer
    return std::nullopt;
}

}  // namespace

ZALNullableData ZALDataByEncodingBase64(ZALDataView data) {
    constexpr std::size_t bytesPerLine = 54;
    const std::size_t length = 4 * ((data.size() + 2) / 3) + data.size() / bytesPerLine + 1;
    ZALNullableData out = workingBuffer(data.size(), length + 8);  // a few to spare for the codec
    if (!out) return out;
    auto* const text = reinterpret_cast<char*>(out->data());
    base64_encodestate state;
    base64_init_encodestate(&state);
    int written = base64_encode_block(reinterpret_cast<const char*>(data.data()),
                                      static_cast<int>(data.size()), text, &state);
    written += base64_encode_blockend(text + written, &state);
    out->resize(static_cast<std::size_t>(written));
    return out;
}

ZALNullableData ZALDataByDecodingBase64(ZALDataView data) {
    ZALNullableData out =
        workingBuffer(data.size(), data.size() / 4 * 3 + 8);  // the codec touches one byte past
    if (!out) return out;
    base64_decodestate state;
    base64_init_decodestate(&state);
    const int written =
        base64_decode_block(reinterpret_cast<const char*>(data.data()), static_cast<int>(data.size()),
                            reinterpret_cast<char*>(out->data()), &state);
    out->resize(static_cast<std::size_t>(written));
    return out;
}
