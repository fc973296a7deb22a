#include <zaltag/serato/ZALBase64.h>
#include <zaltag/serato/ZALTagSeratoGrid.h>

#include "support/Hex.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using testing::ElementsAre;

ZALTagSeratoGrid grid(const std::string& hex) {
    return ZALTagSeratoGrid::gridWithData(fromHex("01 00" + hex)).value();
}

TEST(SeratoGrid, readsMarkersInBothForms) {
    const std::string hex = "01 00 00 00 00 02 BF 00 00 00 00 00 00 04 3F 00 00 00 42 F0 00 00 74";
    const auto read = ZALTagSeratoGrid::gridWithData(fromHex(hex));
    const auto& points = read->gridPoints();
    ASSERT_TRUE(read->major() == 1 && read->minor() == 0 && points.size() == 2);
    EXPECT_TRUE(points[0].position() == -0.5F && points[0].beatsToNext() == 4 && points[1].tempo() == 120);
    EXPECT_TRUE(grid("00 00 00 00 74").gridPoints().empty()) << "no marker, one footer byte";
    ZALData wrapped(42);
    const ZALData raw = fromHex(hex);
    wrapped.insert(wrapped.end(), raw.begin(), raw.end());
    EXPECT_EQ(ZALTagSeratoGrid::gridWithEncodedData(dataByEncodingBase64(wrapped).value()), read);
}

TEST(SeratoGrid, refusesWhatIsTooShort) {
    const LogCapture log;
    const char* const marker = "00 00 00 00 00 00 00 00";
    for (const std::string& hex :
         {std::string("01 00 00 00 00"), "01 00 00 00 00 03" + std::string(marker) + marker,
          "01 00 20 00 00 00" + std::string(marker)}) {
        EXPECT_EQ(ZALTagSeratoGrid::gridWithData(fromHex(hex)), std::nullopt) << hex;
    }
    EXPECT_EQ(ZALTagSeratoGrid::gridWithEncodedData(bytesOf("TQ")), std::nullopt);
    EXPECT_EQ(ZALTagSeratoGridPoint::gridPointWithData(fromHex("01")), std::nullopt);
    EXPECT_THAT(log.lines(),
                ElementsAre("Serato grid data too short: <01000000 00>", "Serato grid data too short",
                            "Serato grid data too short", "Failed to decode grid data: <5451> (2 bytes)",
                            "Serato grid point incorrect size: <01>"));
}

TEST(SeratoGrid, snapsToTheNearestBeat) {
    const std::string at0 = "00 00 00 00", at2 = "40 00 00 00", beats4 = "00 00 00 04",
                      bpm120 = "42 F0 00 00";
    const std::string single = "00 00 00 01 3F 00 00 00" + bpm120;
    const std::string pair = "00 00 00 02" + at0 + beats4 + at2 + bpm120;
    const std::string without = "00 00 00 03" + at0 + "00 00 00 00" + at2 + beats4 + "40 80 00 00" + bpm120;
    const double infinity = std::numeric_limits<double>::infinity();
    const std::tuple<std::string, double, double> cases[] = {
        {single, 1.26, 1.5},
        {single, 1.24, 1.0},
        {single, 0.1, 0.0},
        {single, -0.75, -1.0},  // halves away from zero, before the marker too
        {pair, 0.74, 0.5},
        {pair, 1.25, 1.5},
        {pair, -0.25, -0.5},
        {pair, 2.0, 2.0},
        {pair, 2.3, 2.5},
        {without, 1.3, 1.5},
        {without, 1.8, 2.0},
        {pair, infinity, infinity},
        {"00 00 00 00", 1.3, 1.3},
        // Markers at one place, and at no place: no beat length.
        {"00 00 00 02" + at2 + beats4 + at2 + bpm120, 1.3, 1.3},
        {"00 00 00 02" + at0 + beats4 + "7F C0 00 00" + bpm120, 1.3, 1.3},
    };
    for (const auto& [hex, time, snapped] : cases) {
        EXPECT_EQ(grid(hex).gridTimeForTime(time), snapped) << hex << " " << time;
    }
    EXPECT_TRUE(std::isnan(grid(pair).gridTimeForTime(std::nan(""))));
    // 1/3 s a beat in single precision: the ninth of them is not quite at 3 s.
    const ZALTagSeratoGrid thirds = grid("00 00 00 02" + at0 + "00 00 00 03 3F 80 00 00" + bpm120);
    EXPECT_EQ(thirds.gridTimeForTime(-3.0), -9.0 * (1.0F / 3.0F));
    EXPECT_EQ(thirds.gridTimeForTime(1.0), 3.0 * (1.0F / 3.0F))
        << "a time on the second marker is of the first pair";
}

TEST(SeratoGrid, aTempoThatIsNotAboveZeroLeavesTheTime) {
    const std::pair<const char*, const char*> cases[] = {{"00 00 00 00", "0.00"}, {"C2 F0 00 00", "-120.00"}};
    for (const auto& [tempo, text] : cases) {
        const LogCapture log;
        const auto read = grid(std::string("00 00 00 02 00 00 00 00 00 00 00 04 40 00 00 00") + tempo);
        EXPECT_EQ(read.gridTimeForTime(0.74), 0.5);
        EXPECT_EQ(read.gridTimeForTime(2.1), 2.1);
        EXPECT_EQ(read.gridTimeForTime(9.9), 9.9);
        const std::string line = std::string("Invalid grid marker tempo value: ") + text;
        EXPECT_THAT(log.lines(), ElementsAre(line, line)) << "once per call";
    }
}

}  // namespace
