#include <zaltag/base/ZALTagDecodeGRP1FrameData.h>

#include "base/Numbers.h"
#include "base/Unicode.h"
#include "support/Hex.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(GRP1Decoding, readsBothEncodingsAndRefusesTheRest) {
    const std::pair<const char*, ZALNullableString> rows[] = {
        {"00 41 E9", "Aé"},
        {"00 41 00", std::string("A\0", 2)},  // no terminator is stripped
        {"01 FF FE 41 00", "A"},
        {"01 FE FF 00 41", "A"},
        {"01 00 41", "A"},  // big-endian without a mark
        {"01 FF FE 3C D8 B5 DF", "🎵"},
        {"03 00 41", "A"},  // every other encoding byte is UTF-16 too
        {"01 FF FE", ""},
        {"00", std::nullopt},
        {"01 41", std::nullopt},
        {"01 FF FE 3C D8", std::nullopt},
    };
    for (const auto& [hex, text] : rows) {
        const ZALData bytes = fromHex(hex);
        EXPECT_EQ(ZALTagDecodeGRP1FrameData(bytes.data(), static_cast<std::uint32_t>(bytes.size())), text)
            << hex;
    }
    EXPECT_EQ(ZALTagDecodeGRP1FrameData(nullptr, 10), std::nullopt);
}

TEST(Unicode, malformedSequencesBecomeReplacements) {
    EXPECT_EQ(ZALValidUTF8("a\xFFz"), "a\uFFFDz");
    EXPECT_FALSE(zal::isValidUTF8("\xED\xA0\x80") || zal::isValidUTF8("\xC0\x80"));
    EXPECT_EQ(zal::utf8FromUTF16(u"🎵é" + std::u16string(1, char16_t{0xD800})), "🎵é\uFFFD");
}

TEST(Unicode, cutsBetweenCharacters) {
    EXPECT_EQ(zal::utf16Length("é🎵"), 3u);
    EXPECT_EQ(zal::prefixOfUTF16Length("é🎵z", 3), "é🎵");
    EXPECT_EQ(zal::prefixOfUTF16Length("é🎵z", 2), "é") << "half of a pair is none";
    EXPECT_EQ(zal::prefixOfUTF16Length("ab", 5), "ab");
}

TEST(Numbers, textIsReadAsFarAsItIsANumber) {
    using Integer = std::numeric_limits<std::int64_t>;
    const std::pair<const char*, std::int64_t> integers[] = {{" \t+12abc", 12},
                                                             {"-7.9", -7},
                                                             {"x1", 0},
                                                             {"+-3", 0},
                                                             {"99999999999999999999", Integer::max()},
                                                             {"-99999999999999999999", Integer::min()}};
    for (const auto& [text, value] : integers) {
        EXPECT_EQ(zal::integerValue(text), value) << text;
    }
    const std::pair<const char*, double> doubles[] = {{" 128.5bpm", 128.5},
                                                      {"-1e3", -1000},
                                                      {"inf", 0},
                                                      {"1e999", std::numeric_limits<double>::max()},
                                                      {"1e-999", 0}};
    for (const auto& [text, value] : doubles) {
        EXPECT_EQ(zal::doubleValue(text), value) << text;
    }
    const std::pair<double, std::uint32_t> seconds[] = {{12.3456, 12346},
                                                        {0.0005, 1},
                                                        {-0.2, 0},
                                                        {std::numeric_limits<double>::quiet_NaN(), 0},
                                                        {1e300, 0xFFFFFFFF}};
    for (const auto& [value, milliseconds] : seconds) {
        EXPECT_EQ(zal::millisecondsFromSeconds(value), milliseconds) << value;
    }
}

}  // namespace
