#include <zaltag/base/ZALTagSyncSafeInteger.h>

#include "support/Hex.h"

#include <gtest/gtest.h>

#include <random>

namespace {

std::string packed(std::uint32_t value, std::size_t size) {
    ZALData bytes(size);
    EXPECT_EQ(size == 4 ? ZALTagSyncSafe4(value, bytes.data()) : ZALTagSyncSafe5(value, bytes.data()),
              bytes.data());
    return toHex(bytes);
}

std::uint32_t unpacked(std::string_view hex) {
    const ZALData bytes = fromHex(hex);
    return bytes.size() == 4 ? ZALTagUnSyncSafe4(bytes.data()) : ZALTagUnSyncSafe5(bytes.data());
}

TEST(SyncSafe, packsSevenBitsAByteTheSignIntoTheFirstOfFive) {
    const std::pair<std::uint32_t, const char*> rows[] = {
        {0, "00 00 00 00"},
        {14, "00 00 00 0E"},
        {0x00CC8800, "06 32 10 00"},
        {ZALTagSyncSafe4ValueMax, "7F 7F 7F 7F"},
        {0x7FFFFFFF, "07 7F 7F 7F 7F"},
        {0x80000000, "78 00 00 00 00"},
        {0xFFFFFFFF, "7F 7F 7F 7F 7F"},
        {0xFF00FF00, "7F 78 03 7E 00"},
    };
    for (const auto& [value, hex] : rows) {
        EXPECT_EQ(packed(value, value <= ZALTagSyncSafe4ValueMax ? 4 : 5), hex);
    }
}

TEST(SyncSafe, spreadsTheSignOfMalformedBytes) {
    EXPECT_EQ(unpacked("00 00 01 00"), 128u);
    EXPECT_EQ(unpacked("00 00 00 80"), 0xFFFFFF80u);
    EXPECT_EQ(unpacked("00 80 00 01"), 0xFFE00001u);
    EXPECT_EQ(unpacked("80 00 00 00"), 0xF0000000u);
    EXPECT_EQ(unpacked("80 00 00 00 01"), 0x00000001u) << "byte 0 is unsigned and falls off the top";
    EXPECT_EQ(unpacked("00 80 00 00 00"), 0xF0000000u);
    EXPECT_EQ(unpacked("00 00 00 00 FF"), 0xFFFFFFFFu);
}

TEST(SyncSafe, fiveBytesReturnEveryValue) {
    std::mt19937 random(1);
    for (int i = 0; i < 10000; ++i) {
        const auto value = static_cast<std::uint32_t>(random());
        ZALData bytes(5);
        ASSERT_EQ(ZALTagUnSyncSafe5(ZALTagSyncSafe5(value, bytes.data())), value);
        ASSERT_EQ(ZALTagUnSyncSafe4(ZALTagSyncSafe4(value & ZALTagSyncSafe4ValueMax, bytes.data())),
                  value & ZALTagSyncSafe4ValueMax);
    }
}

TEST(SyncSafeDeathTest, aValueAboveFourBytesAborts) {
    ZALData bytes(4);
    EXPECT_DEATH(ZALTagSyncSafe4(0x10000000, bytes.data()),
                 "Assertion failed: \\(value <= ZALTagSyncSafe4ValueMax\\), function ZALTagSyncSafe4, "
                 "file ZALTagSyncSafeInteger, line 39\\.");
}

}  // namespace
