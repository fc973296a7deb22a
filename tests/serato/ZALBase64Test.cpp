#include <zaltag/serato/ZALBase64.h>

#include "support/Hex.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

namespace {

TEST(Base64, breaksLinesAfter72CharactersAndAtTheEnd) {
    const std::string line(72, 'A');
    const std::pair<ZALData, std::string> rows[] = {{{}, "\n"},
                                                    {{0x4D}, "TQ==\n"},
                                                    {ZALData(53), std::string(71, 'A') + "=\n"},
                                                    {ZALData(54), line + "\n\n"},
                                                    {ZALData(55), line + "\nAA==\n"}};
    for (const auto& [bytes, text] : rows) {
        EXPECT_EQ(dataByEncodingBase64(bytes), bytesOf(text));
    }
}

TEST(Base64, skipsWhatIsNotInTheAlphabet) {
    const std::pair<std::string, const char*> rows[] = {
        {"TQ==\n", "4D"},
        {"TQ", "4D"},
        {"\r\nT\xFF Q\r\n", "4D"},
        {"TWF", "4D 61"},
        {"TWFuT", "4D 61 6E"},
        {"TQ==TWFu", "4D 04 D6 16"},  // padding in the middle does not end a group
        {"!?-_\n", ""},
        {std::string("TQ\0\0\0\0", 6), "4D"}};
    for (const auto& [text, hex] : rows) {
        EXPECT_EQ(toHex(dataByDecodingBase64(bytesOf(text)).value()), hex) << text;
    }
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
