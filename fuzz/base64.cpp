#include "FuzzSupport.h"

namespace {

// The decoder in its plainest words: six bits a character, everything else is skipped.
ZALData plainlyDecoded(ZALDataView text) {
    static constexpr std::string_view alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    ZALData out;
    std::uint32_t bits = 0;
    unsigned held = 0;
    for (const std::uint8_t byte : text) {
        const std::size_t value = alphabet.find(static_cast<char>(byte));
        if (value == std::string_view::npos) continue;
        bits = bits << 6 | static_cast<std::uint32_t>(value);
        held += 6;
        if (held < 8) continue;
        held -= 8;
        out.push_back(static_cast<std::uint8_t>(bits >> held));
    }
    return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const ZALDataView data(bytes, size);
    require(dataByDecodingBase64(data).value() == plainlyDecoded(data));
    const ZALData text = dataByEncodingBase64(data).value();
    require(text.size() == 4 * ((size + 2) / 3) + size / 54 + 1);
    require(plainlyDecoded(text) == ZALData(data.begin(), data.end()));
    return 0;
}
