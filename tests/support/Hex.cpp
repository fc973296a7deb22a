#include "support/Hex.h"

#include <cctype>
#include <cstdio>

ZALData fromHex(std::string_view digits) {
    ZALData out;
    std::string pair;
    for (const char c : digits) {
        if (std::isspace(static_cast<unsigned char>(c)) != 0) continue;
        pair += c;
        if (pair.size() == 2) {
            out.push_back(static_cast<std::uint8_t>(std::stoi(pair, nullptr, 16)));
            pair.clear();
        }
    }
    return out;
}

std::string toHex(ZALDataView bytes) {
    std::string out;
    for (const std::uint8_t byte : bytes) {
        char pair[4];
        std::snprintf(pair, sizeof pair, "%02X", byte);
        if (!out.empty()) out += ' ';
        out += pair;
    }
    return out;
}

ZALData bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}
