#include "rekordbox/ImportFiles.h"
#include "rekordbox/TrackLocation.h"

#include <zaltag/rekordbox/ZALRekordboxCuePoint.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

ZALRekordboxCuePoint cue(std::int64_t type, double start, double end, std::int64_t num = 0,
                         const char* name = "a") {
    auto made = ZALRekordboxCuePoint(ZALTagCuePoint(start, ZALNullableString(name)), num);
    made.setType(type);
    made.setEnd(end);
    return made;
}

}  // namespace

TEST(ZALRekordboxCuePoint, comparesTimesInMicrosecondsAndTheEndOfLoopsOnly) {
    const std::tuple<ZALRekordboxCuePoint, ZALRekordboxCuePoint, bool, bool> rows[] = {
        {cue(0, 1, 2), cue(0, 1, 3), true, false},
        {cue(4, 1, 2), cue(4, 1, 3), false, false},
        {cue(4, 1, 2), cue(4, 1, 2.0000004), true, true},
        {cue(0, 1, 0), cue(0, 1.0000004, 0), true, true},
        {cue(0, 1, 0), cue(0, 1.0000006, 0), false, false},
        {cue(0, 1, 0), cue(0, 1, 0, -1), false, false},
        {cue(0, 1, 0), cue(3, 1, 0), false, false},
        {cue(0, 1, 0), cue(0, 1, 0, 0, "b"), false, false},
    };
    for (const auto& [one, other, equal, sameHash] : rows) {
        SCOPED_TRACE(one.description() + " " + other.description());
        EXPECT_EQ(one == other, equal);
        EXPECT_EQ(one.hash() == other.hash(), sameHash);
    }
    EXPECT_EQ(cue(4, 0, 0).typeName(), "Loop");
    EXPECT_EQ(cue(5, 0, 0).typeName(), std::nullopt);
}

TEST(TrackLocation, decodesEscapesAndLeavesEveryOtherCharacter) {
    const std::pair<const char*, ZALNullableString> rows[] = {
        {"file://localhost/Users/dj/A%20B%c3%A9.mp3", "/Users/dj/A B\xC3\xA9.mp3"},
        {"file:///a#b?c+d%zz%4", "/a#b?c+d%zz%4"},
        {"file://localhost/C:/Music/\xC3\xA9 (1),;!@=.mp3", "/C:/Music/\xC3\xA9 (1),;!@=.mp3"},
        {"file://localhostsoundcloud:tracks:1", std::nullopt},
        {"file://server/share/a.mp3", std::nullopt},
        {"http://localhost/a.mp3", std::nullopt},
        {"file://localhost", std::nullopt},
        {"file://localhost/%ff.mp3", std::nullopt},
        {"file://localhost/a%00b.mp3", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [location, path] : rows) {
        EXPECT_EQ(zal::pathOfLocation(location), path) << location;
    }
}

TEST(ImportFiles, areFilledEvenlyWithAtMost5000UpToAHundred) {
    const auto ends = [](std::size_t n) { return zal::importGroupEnds(n); };
    EXPECT_TRUE(ends(0).empty());
    EXPECT_EQ(ends(5000), std::vector<std::size_t>{5000});
    EXPECT_EQ(ends(12001), (std::vector<std::size_t>{4000, 8000, 12001}));
    EXPECT_EQ(ends(600'001).size(), 100U);
    EXPECT_EQ(ends(600'001).back(), 600'001U);
}
