#include <zaltag/base/ZALTagDecodeGRP1FrameData.h>

#include "base/Numbers.h"
#include "base/Unicode.h"
#include "support/Hex.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

ZALNullableString decoded(const char* hex) {
    const ZALData bytes = fromHex(hex);
    return ZALTagDecodeGRP1FrameData(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

TEST(GRP1Decoding, readsBothEncodings) {
    EXPECT_EQ(decoded("00 41 42"), "AB");
    EXPECT_EQ(decoded("00 E9"), "é");
    EXPECT_EQ(decoded("00 41 00"), std::string("A\0", 2)) << "no terminator is stripped";
    EXPECT_EQ(decoded("01 FF FE 41 00"), "A");
    EXPECT_EQ(decoded("01 FE FF 00 41"), "A");
    EXPECT_EQ(decoded("01 00 41"), "A") << "big-endian without a mark";
    EXPECT_EQ(decoded("01 FF FE 3C D8 B5 DF"), "🎵");
    EXPECT_EQ(decoded("02 00 41"), "A") << "every other encoding byte is UTF-16 too";
    EXPECT_EQ(decoded("03 00 41"), "A");
    EXPECT_EQ(decoded("01 FF FE"), "");
}

TEST(GRP1Decoding, refusesWhatItCannotDecode) {
    EXPECT_EQ(ZALTagDecodeGRP1FrameData(nullptr, 10), std::nullopt);
    EXPECT_EQ(decoded("00"), std::nullopt);
    EXPECT_EQ(decoded("01 41"), std::nullopt);
    EXPECT_EQ(decoded("01 FF FE 3C D8"), std::nullopt);
}

TEST(Unicode, malformedSequencesBecomeReplacements) {
    EXPECT_TRUE(zal::isValidUTF8("aé🎵"));
    for (const char* text :
         {"\xC0\x80", "\xED\xA0\x80", "\xF5\x80\x80\x80", "\xE2\x82", "\x80", "\xF0\x80\x80\x80"}) {
        EXPECT_FALSE(zal::isValidUTF8(text)) << toHex(bytesOf(text));
    }
    EXPECT_EQ(ZALValidUTF8("a\xFFz"), "a\uFFFDz");
    EXPECT_EQ(zal::utf16FromUTF8("🎵"), u"🎵");
    EXPECT_EQ(zal::utf8FromUTF16(u"🎵é"), "🎵é");
    EXPECT_EQ(zal::utf8FromUTF16(std::u16string(1, char16_t{0xD800})), "\uFFFD");
}

TEST(Unicode, cutsBetweenCharacters) {
    EXPECT_EQ(zal::utf16Length("é🎵"), 3u);
    EXPECT_EQ(zal::prefixOfUTF16Length("é🎵z", 3), "é🎵");
    EXPECT_EQ(zal::prefixOfUTF16Length("é🎵z", 2), "é") << "half of a pair is none";
    EXPECT_EQ(zal::prefixOfUTF16Length("ab", 5), "ab");
}

TEST(Numbers, textIsReadAsFarAsItIsANumber) {
    EXPECT_EQ(zal::integerValue(" \t+12abc"), 12);
    EXPECT_EQ(zal::integerValue("-7.9"), -7);
    EXPECT_EQ(zal::integerValue("x1"), 0);
    EXPECT_EQ(zal::integerValue(""), 0);
    EXPECT_EQ(zal::integerValue("+-3"), 0);
    EXPECT_EQ(zal::integerValue("99999999999999999999"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(zal::integerValue("-99999999999999999999"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(zal::doubleValue(" 128.5bpm"), 128.5);
    EXPECT_EQ(zal::doubleValue("-1e3"), -1000);
    EXPECT_EQ(zal::doubleValue("inf"), 0);
    EXPECT_EQ(zal::doubleValue("1e999"), std::numeric_limits<double>::max());
    EXPECT_EQ(zal::doubleValue("1e-999"), 0);
}

TEST(Numbers, secondsBecomeMilliseconds) {
    EXPECT_EQ(zal::millisecondsFromSeconds(12.3456), 12346u);
    EXPECT_EQ(zal::millisecondsFromSeconds(0.0005), 1u);
    EXPECT_EQ(zal::millisecondsFromSeconds(-0.2), 0u);
    EXPECT_EQ(zal::millisecondsFromSeconds(std::numeric_limits<double>::quiet_NaN()), 0u);
    EXPECT_EQ(zal::millisecondsFromSeconds(1e300), 0xFFFFFFFFu);
}

TEST(Numbers, decimalsAreShortAndPlain) {
    EXPECT_EQ(zal::shortestDecimal(100000), "100000");
    EXPECT_EQ(zal::shortestDecimal(0.1), "0.1");
}

}  // namespace
