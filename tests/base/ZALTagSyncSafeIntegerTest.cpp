#include <zaltag/base/ZALTagSyncSafeInteger.h>

#include "support/Hex.h"

#include <gtest/gtest.h>

#include <random>

namespace {

std::string packed4(std::uint32_t value) {
    ZALData bytes(4);
    EXPECT_EQ(ZALTagSyncSafe4(value, bytes.data()), bytes.data());
    return toHex(bytes);
}

std::string packed5(std::uint32_t value) {
    ZALData bytes(5);
    EXPECT_EQ(ZALTagSyncSafe5(value, bytes.data()), bytes.data());
    return toHex(bytes);
}

std::uint32_t unpacked4(const char* hex) {
    return ZALTagUnSyncSafe4(fromHex(hex).data());
}
std::uint32_t unpacked5(const char* hex) {
    return ZALTagUnSyncSafe5(fromHex(hex).data());
}

TEST(SyncSafe, packsSevenBitsAByte) {
    EXPECT_EQ(packed4(0), "00 00 00 00");
    EXPECT_EQ(packed4(14), "00 00 00 0E");
    EXPECT_EQ(packed4(0x00CC8800), "06 32 10 00");
    EXPECT_EQ(packed4(ZALTagSyncSafe4ValueMax), "7F 7F 7F 7F");
    EXPECT_EQ(packed5(0x7FFFFFFF), "07 7F 7F 7F 7F");
}

TEST(SyncSafe, fillsTheFirstOfFiveBytesWithTheSign) {
    EXPECT_EQ(packed5(0x80000000), "78 00 00 00 00");
    EXPECT_EQ(packed5(0xFFFFFFFF), "7F 7F 7F 7F 7F");
    EXPECT_EQ(packed5(0xFF00FF00), "7F 78 03 7E 00");
}

TEST(SyncSafe, spreadsTheSignOfMalformedBytes) {
    EXPECT_EQ(unpacked4("00 00 01 00"), 128u);
    EXPECT_EQ(unpacked4("00 00 00 80"), 0xFFFFFF80u);
    EXPECT_EQ(unpacked4("00 80 00 01"), 0xFFE00001u);
    EXPECT_EQ(unpacked4("80 00 00 00"), 0xF0000000u);
    EXPECT_EQ(unpacked5("80 00 00 00 01"), 0x00000001u) << "byte 0 is unsigned and falls off the top";
    EXPECT_EQ(unpacked5("00 80 00 00 00"), 0xF0000000u);
    EXPECT_EQ(unpacked5("00 00 00 00 FF"), 0xFFFFFFFFu);
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
