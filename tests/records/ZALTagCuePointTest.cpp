#include <zaltag/records/ZALTagCuePoint.h>

#include <gmock/gmock.h>

#include <limits>

namespace {

using testing::ElementsAre;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

ZALTagCuePoint cue(double time, ZALNullableString name = std::nullopt) {
    return ZALTagCuePoint(time, std::move(name));
}

std::vector<double> timesOf(const ZALArray<ZALTagCuePoint>& cues) {
    std::vector<double> times;
    for (const ZALTagCuePoint& one : cues) {
        times.push_back(one.time());
    }
    return times;
}

TEST(CuePoint, timesMayDifferByLessThanAMillisecond) {
    EXPECT_TRUE(cue(10, "a") == cue(10.0009, "a") && cue(10) == cue(10));
    EXPECT_TRUE(cue(10, "a") != cue(10.002, "a") && cue(0, "a") != cue(0.001, "a"));
    EXPECT_TRUE(cue(10, "a") != cue(10, "b") && cue(10, "") != cue(10)) << "an empty name is a name";
    EXPECT_NE(cue(10.0004).hash(), cue(10.0009).hash()) << "the hash is of the time as printed";
    EXPECT_EQ(cue(10.0001).hash(), cue(10.0004).hash());
}

TEST(CuePoint, sortingKeepsEqualTimesInOrderAndNaNLast) {
    const double times[] = {nan, 2, infinity, 1, -infinity};
    std::vector<ZALTagCuePoint> cues;
    for (std::size_t i = 0; i < 50; ++i) {
        cues.push_back(cue(times[i % 5], std::to_string(i / 5)));
    }
    const auto sorted = sortedCuePoints(cues);
    for (std::size_t i = 0; i < 50; ++i) {
        EXPECT_EQ(sorted[i].name(), std::to_string(i % 10)) << i;
    }
    EXPECT_THAT(timesOf({sorted[0], sorted[10], sorted[20], sorted[30], sorted[40]}),
                ElementsAre(-infinity, 1, 2, infinity, testing::IsNan()));
}

TEST(CuePoint, snapsToTheNearestBeatAndEarlierOnATie) {
    const ZALArray<double> beats{0.5, 1.0, 1.5};
    const ZALArray<ZALTagCuePoint> cues{cue(1.24, "x"), cue(1.25), cue(1.26),    cue(-3),
                                        cue(99),        cue(nan),  cue(infinity)};
    const auto snapped = cuePointsAdjustedToBeatTimes(cues, beats);
    EXPECT_THAT(timesOf(snapped), ElementsAre(1.0, 1.0, 1.5, 0.5, 1.5, testing::IsNan(), infinity));
    EXPECT_EQ(snapped[0].name(), "x");
    EXPECT_EQ(cues[0].time(), 1.24) << "the array that was asked stays as it is";
    EXPECT_TRUE(cuePointsAdjustedToBeatTimes(cues, {}).isSameObject(cues));
}

TEST(CuePoint, snapsNoFurtherThanABeatThatIsNotCloser) {
    const std::pair<ZALArray<double>, double> cases[] = {
        {{1, 2, 2, 5}, 2}, {{1, 2, nan, 5}, 2}, {{1, 2, 6, 6}, 6}, {{1, 2, infinity}, 2},
        {{nan, 6}, 5},     {{5, 5}, 5},         {{8, 9}, 8}};
    for (const auto& [beats, snapped] : cases) {
        EXPECT_THAT(timesOf(cuePointsAdjustedToBeatTimes({cue(5)}, beats)), ElementsAre(snapped));
    }
}

}  // namespace
