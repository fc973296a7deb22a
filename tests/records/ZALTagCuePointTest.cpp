#include <zaltag/records/ZALCuePlan.h>
#include <zaltag/records/ZALTagCuePoint.h>

#include "records/CuePads.h"

#include <gmock/gmock.h>

#include <limits>
#include <sstream>

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

TEST(CuePoint, saysMoreThanEqualityAsksFor) {
    ZALTagCuePoint loop = cue(10, "a");
    loop.setEnd(14);
    loop.setPad(-5);
    loop.setColor(0xFF123456);
    EXPECT_TRUE(loop == cue(10, "a") && loop.hash() == cue(10, "a").hash() &&
                !loop.isWhollyEqualTo(cue(10, "a")));
    EXPECT_TRUE(loop.isLoop() && loop.pad() == ZALTagCuePoint::noPad && loop.color() == 0x123456u);
    const auto moved = ZALCuePointsMovedBy(cuePointsAdjustedToBeatTimes({loop}, {9, 9.5}), -10)[0];
    EXPECT_TRUE(moved.time() == 0 && moved.end() == 3.5) << "to a beat with its end, then before the start";
    loop.setEnd(10);
    EXPECT_TRUE(loop.kind() == ZALTagCuePoint::Kind::loop && !loop.isLoop());
    loop.setKind(*ZALTagCuePoint::kindOfName("fade-in"));
    EXPECT_FALSE(loop.end());
}

TEST(CuePads, whatIsSaidFirstAndNoneTwice) {
    struct Case {
        const char* said;  // a pad each: "-" none, "?" nothing said; "l" and "f" for load and fade markers
        std::vector<int> rekordbox, serato;
    };
    const Case cases[] = {
        {"? ? ?", {0, 1, 2}, {0, 1, 2}},
        {"? l?", {0, -1}, {0, 1}},
        {"7 ? 3 0", {7, 1, 3, 0}, {7, 1, 3, 0}},
        {"f3 3 - ? 3", {0, 3, -1, 1, 2}, {0, 3, 4, 1, 2}},
        {"l0 f1 - 0", {-1, 1, -1, 0}, {2, 1, 3, 0}},
        {"9 15 16 8", {9, 15, 0, 8}, {0, 1, 2, 3}},
        {"0 1 2 3 4 5 6 7 2 -", {0, 1, 2, 3, 4, 5, 6, 7, -1, -1}, {0, 1, 2, 3, 4, 5, 6, 7, -1, -1}},
    };
    for (const Case& one : cases) {
        std::vector<ZALTagCuePoint> cues;
        std::istringstream words(one.said);
        for (std::string word; words >> word;) {
            cues.emplace_back();
            if (word[0] == 'l') cues.back().setKind(ZALTagCuePoint::Kind::load);
            if (word[0] == 'f') cues.back().setKind(ZALTagCuePoint::Kind::fadeOut);
            const std::string pad = word.substr(word[0] == 'l' || word[0] == 'f');
            if (pad != "?") cues.back().setPad(pad == "-" ? ZALTagCuePoint::noPad : std::stoi(pad));
        }
        EXPECT_EQ(zal::padsOf(cues, {.mostPads = 16, .loadsHavePads = false}), one.rekordbox) << one.said;
        EXPECT_EQ(zal::padsOf(cues, {.hasOthers = false}), one.serato) << one.said;
    }
}

TEST(CuePlan, aMergeAddsWhatIsMissingOnFreePads) {
    const auto on = [](int pad, double time, double end = 0) {
        ZALTagCuePoint one = cue(time);
        one.setPad(pad);
        if (end > 0) one.setEnd(end);
        return one;
    };
    const auto merged =
        ZALMergedCuePoints({on(0, 5), on(-1, 9, 12)}, {on(3, 5.009), on(0, 5, 7), on(0, 1), on(-1, 2)});
    EXPECT_THAT(timesOf(merged), ElementsAre(1, 2, 5, 5, 9));
    EXPECT_TRUE(merged[0].pad() == 2 && merged[1].pad() == -1 && merged[2].pad() == 0 &&
                merged[3].pad() == 1);
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
