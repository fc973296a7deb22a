#include "collection/Dates.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using Time = std::chrono::system_clock::time_point;

Time at(std::int64_t seconds) {
    return Time(std::chrono::seconds(seconds));
}

TEST(Dates, stampsCarryTheLocalOffset) {
    const std::pair<const char*, const char*> cases[] = {{"UTC0", "2024-03-09 16:05:07+0000"},
                                                         {"CET-1", "2024-03-09 17:05:07+0100"},
                                                         {"NST3:30", "2024-03-09 12:35:07-0330"}};
    for (const auto& [zone, stamp] : cases) {
        ::setenv("TZ", zone, 1);
        EXPECT_EQ(zal::stampDate(at(1710000307)), stamp);
    }
    EXPECT_EQ(zal::slashDate(at(1710000307)), "2024/3/9") << "days are in UTC";
    EXPECT_EQ(zal::slashDate(at(-1)), "1969/12/31");
    EXPECT_EQ(zal::startOfDayUTC(at(-1)), at(-86400));
    ::unsetenv("TZ");
}

TEST(Dates, slashDatesAreReadWholeOrNotAtAll) {
    EXPECT_EQ(zal::parseSlashDate("2024/3/9"), at(1709942400));
    EXPECT_EQ(zal::parseSlashDate("2024/03/09"), at(1709942400));
    EXPECT_EQ(zal::parseSlashDate("2024/2/29"), at(1709164800));
    EXPECT_EQ(zal::parseSlashDate("1600/1/1"), zal::parseSlashDate("1678/1/1")) << "the clock's first day";
    EXPECT_EQ(zal::parseSlashDate("9999/1/1"), zal::parseSlashDate("2261/12/31"));
    for (const char* text : {"", "2023/13/45", "2023/2/29", "2024/3/9x", " 2024/3/9", "2024/3", "2024/-3/9",
                             "2024/3/+9", "2024/003/9", "0/1/1", "2024-3-9", "2024//9"}) {
        EXPECT_EQ(zal::parseSlashDate(text), std::nullopt) << text;
    }
}

}  // namespace
