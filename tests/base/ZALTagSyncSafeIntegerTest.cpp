#include <zaltag/base/ZALTagSyncSafeInteger.h>

#include "support/Hex.h"

#include <gtest/gtest.h>

#include <random>

namespace {

TEST(SyncSafe, spreadsTheSignOfMalformedBytes) {
    const std::pair<const char*, std::uint32_t> rows[] = {
        {"06 32 10 00", 0x00CC8800},    {"00 00 00 80", 0xFFFFFF80},    {"80 00 00 00", 0xF0000000},
        {"7F 78 03 7E 00", 0xFF00FF00}, {"80 00 00 00 01", 0x00000001},  // the first falls off the top
        {"00 80 00 00 00", 0xF0000000}, {"00 00 00 00 FF", 0xFFFFFFFF}};
    for (const auto& [hex, value] : rows) {
        const ZALData bytes = fromHex(hex);
        EXPECT_EQ(bytes.size() == 4 ? ZALTagUnSyncSafe4(bytes.data()) : ZALTagUnSyncSafe5(bytes.data()),
                  value)
            << hex;
    }
}

TEST(SyncSafe, fiveBytesReturnEveryValue) {
    std::mt19937 random(1);
    for (int i = 0; i < 10000; ++i) {
        const auto value = static_cast<std::uint32_t>(random());
        ZALData bytes(5);
        ASSERT_EQ(ZALTagUnSyncSafe5(ZALTagSyncSafe5(value, bytes.data())), value);
        ASSERT_EQ(bytes[1] & 0x80, 0);
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
