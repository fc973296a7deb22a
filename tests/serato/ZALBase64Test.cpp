#include <zaltag/serato/ZALBase64.h>

#include "support/Hex.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

namespace {

std::string encoded(const ZALData& bytes) {
    const auto text = dataByEncodingBase64(bytes);
    return text ? std::string(text->begin(), text->end()) : "(null)";
}

std::string decoded(std::string_view text) {
    return toHex(dataByDecodingBase64(bytesOf(text)).value());
}

TEST(Base64, breaksLinesAfter72CharactersAndAtTheEnd) {
    const std::string line(72, 'A');
    EXPECT_EQ(CHARS_PER_LINE, 72);
    EXPECT_EQ(encoded({}), "\n");
    EXPECT_EQ(encoded({0x4D}), "TQ==\n");
    EXPECT_EQ(encoded({0x4D, 0x5A}), "TVo=\n");
    EXPECT_EQ(encoded(ZALData(53)), std::string(71, 'A') + "=\n");
    EXPECT_EQ(encoded(ZALData(54)), line + "\n\n");
    EXPECT_EQ(encoded(ZALData(55)), line + "\nAA==\n");
    EXPECT_EQ(encoded(ZALData(108)), line + "\n" + line + "\n\n");
}

TEST(Base64, skipsWhatIsNotInTheAlphabet) {
    for (const char* text : {"TQ==\n", "TQ", "T Q = =", "\r\nT\xFFQ\r\n", "=T=Q", "TQA"}) {
        EXPECT_EQ(decoded(text).substr(0, 2), "4D") << text;
    }
    EXPECT_EQ(decoded("TQ==\n"), "4D");
    EXPECT_EQ(decoded("TQ"), "4D");
    EXPECT_EQ(decoded("TWF"), "4D 61") << "three characters give two bytes";
    EXPECT_EQ(decoded("TWFuT"), "4D 61 6E") << "one gives none";
    EXPECT_EQ(decoded("TQ==TWFu"), "4D 04 D6 16") << "padding in the middle does not end a group";
    EXPECT_EQ(decoded("!?-_\n"), "");
    EXPECT_EQ(decoded(""), "");
    EXPECT_EQ(decoded(std::string("TQ\0\0\0\0", 6)), "4D") << "NUL padding";
}

TEST(Base64, whatMemoryCannotHoldIsNull) {
    const LogCapture log;
    const ZALData byte(1);
    const ZALDataView huge(byte.data(), std::size_t{1} << 40);  // refused before a byte of it is touched
    EXPECT_EQ(dataByEncodingBase64(huge), std::nullopt);
    EXPECT_EQ(dataByDecodingBase64(huge), std::nullopt);
    EXPECT_EQ(log.lines(), std::vector<std::string>(2, "failed to allocate 4398046511104 bytes"));
}

TEST(Base64, everyLengthReturns) {
    ZALData bytes;
    for (int length = 0; length < 300; ++length) {
        const auto text = dataByEncodingBase64(bytes);
        const std::size_t n = bytes.size();
        EXPECT_EQ(text->size(), 4 * ((n + 2) / 3) + n / 54 + 1);
        EXPECT_EQ(dataByDecodingBase64(*text), bytes);
        bytes.push_back(static_cast<std::uint8_t>(length * 37));
    }
}

}  // namespace
