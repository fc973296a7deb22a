#include <zaltag/serato/ZALBase64.h>
#include <zaltag/serato/ZALTagSeratoMarker.h>

#include "serato/CueEntries.h"
#include "support/Hex.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using testing::ElementsAre;
using testing::StartsWith;

const std::string drop = "43 55 45 00 00 00 00 11 00 02 00 00 00 FA 00 CC 88 00 00 00 44 72 6F 70 00";
const std::string color = "43 4F 4C 4F 52 00 00 00 00 04 00 FF FF FF";
const std::string lock = "42 50 4D 4C 4F 43 4B 00 00 00 00 01 01";

ZALData record(const std::string& payload, const char* version = "01 01") {
    ZALData out = fromHex(version);
    const ZALNullableData text = dataByEncodingBase64(fromHex("01 01" + payload));
    out.insert(out.end(), text->begin(), text->end());
    return out;
}

std::string payloadOf(const ZALData& written) {
    return toHex(dataByDecodingBase64(ZALDataView(written).subspan(2)).value()).substr(6);
}

std::string rewritten(const std::string& payload) {
    return payloadOf(ZALTagSeratoMarker::markerWithData(record(payload))->markerData().value());
}

std::vector<std::int16_t> indexesOf(const ZALTagSeratoMarker& marker) {
    std::vector<std::int16_t> out;
    for (const ZALTagSeratoCuePoint& cue : marker.cuePoints()) {
        out.push_back(cue.index());
    }
    return out;
}

TEST(SeratoMarker, readsCuesAndWritesThemBeforeTheRest) {
    const auto marker = ZALTagSeratoMarker::markerWithData(record(color + drop + lock + "00", "02 05"));
    EXPECT_TRUE(marker->major() == 2 && marker->minor() == 5);
    ASSERT_EQ(marker->cuePoints().size(), 1u);
    const ZALTagSeratoCuePoint& cue = marker->cuePoints()[0];
    EXPECT_TRUE(cue.index() == 2 && cue.position() == 250 && cue.size() == 17);
    EXPECT_TRUE(cue.argbColor() == "00CC8800" && cue.label() == "Drop");
    EXPECT_EQ(toHex(cue.cuePointData()), drop);
    const ZALData written = marker->markerData().value();
    EXPECT_EQ(toHex(written).substr(0, 5), "02 05");
    EXPECT_EQ(payloadOf(written), drop + " " + color + " " + lock + " 00");
    EXPECT_EQ(written.back(), '\n');
    EXPECT_EQ(ZALTagSeratoMarker::markerWithEncodedData(marker->encodedMarkerData().value()),
              ZALTagSeratoMarker::markerWithData(written));
}

TEST(SeratoMarker, readsTextWithoutPaddingBehindWhichNulsStand) {
    ZALData data = record(drop);  // 27 bytes, no padding
    data.back() = 0;
    data.resize(470);
    EXPECT_EQ(ZALTagSeratoMarker::markerWithData(data)->cuePoints().size(), 1u);
    const auto encoded = ZALTagSeratoMarker::markerWithData(data)->encodedMarkerData();
    ZALData stray = encoded.value();
    stray.insert(stray.end(), {'A', '\0'});
    EXPECT_EQ(ZALTagSeratoMarker::markerWithEncodedData(stray)->cuePoints().size(), 1u);
    EXPECT_EQ(toHex(dataByDecodingBase64(*encoded).value()).substr(0, 3 * 42),
              toHex(bytesOf(std::string("application/octet-stream\0\0Serato Markers2\0", 42))) + " ");
}

TEST(SeratoMarker, refusesWhatIsTooShort) {
    const LogCapture log;
    EXPECT_EQ(ZALTagSeratoMarker::markerWithData(fromHex("01 01 41 51 45 41")), std::nullopt);
    EXPECT_TRUE(ZALTagSeratoMarker::markerWithData(fromHex("01 01 41 51 45 41 0A")));
    EXPECT_EQ(ZALTagSeratoMarker::markerWithEncodedData(bytesOf("TQ==")), std::nullopt);
    EXPECT_THROW(ZALTagSeratoMarker::markerWithData(fromHex("01 01 51 00 00 00 00")), std::out_of_range);
    EXPECT_THROW(ZALTagSeratoMarker::markerWithEncodedData(
                     dataByEncodingBase64(ZALData(42 + 7, std::uint8_t{' '})).value()),
                 std::out_of_range);
    EXPECT_EQ(zal::findNextCue({}), std::nullopt);
    EXPECT_THAT(log.lines(), ElementsAre("Serato marker data too short: <01014151 4541>",
                                         "Failed to decode marker data: <54513d3d> (4 bytes)",
                                         "NULL buffer passed to nextCue!\n"));
}

TEST(SeratoMarker, keepsTheCuesBeforeOneThatRunsPastTheEnd) {
    // The sizes are 26 of 25 bytes and, wider than 32 bits, 0x100000007.
    for (const char* length : {"00 00 00 12", "FF FF FF FF"}) {
        const std::string bad = "43 55 45 00" + std::string(length) + drop.substr(24);
        const LogCapture log;
        const auto marker = ZALTagSeratoMarker::markerWithData(record(drop + bad));
        EXPECT_THAT(indexesOf(*marker), ElementsAre(2));
        const std::string size = length[0] == 'F' ? "4294967303" : "26";
        EXPECT_THAT(log.lines(),
                    ElementsAre("invalid cue point size: " + size + " at offset 25 (length: 50)"));
        EXPECT_EQ(payloadOf(marker->markerData().value()), drop) << "nothing of the old payload is carried";
        ASSERT_EQ(log.lines().size(), 2u);
        EXPECT_THAT(log.lines()[1], StartsWith("invalid cue point size: " + size + " at offset 0x"));
        EXPECT_THAT(log.lines()[1], testing::EndsWith(" (length: 25)"));
    }
}

TEST(SeratoMarker, theSearchIsOverBytes) {
    // A cue inside another entry's body is found and taken out of it.
    EXPECT_EQ(rewritten("58 00 00 00 00 19" + drop + lock), drop + " 58 00 00 00 00 19 " + lock);
    // Eight bytes hold no cue, nine do: it is too short, and taken out.
    EXPECT_EQ(rewritten("43 55 45 00 00 00 00 00"), "43 55 45 00 00 00 00 00");
    EXPECT_EQ(rewritten("43 55 45 00 00 00 00 00 41"), "41");
    // What the cutting joins from both sides is not searched again.
    EXPECT_EQ(rewritten("43 55" + drop + "45 00 00 00 00 01 01"), drop + " 43 55 45 00 00 00 00 01 01");
}

TEST(SeratoMarker, writesTheFirstEightOfTheList) {
    ZALTagSeratoMarker marker;
    std::vector<ZALTagSeratoCuePoint> cues;
    for (std::uint32_t i = 0; i < 9; ++i) {
        cues.push_back(ZALTagSeratoCuePoint::cuePointWithIndex(static_cast<std::int16_t>(7 - i % 8), i, ""));
    }
    marker.setCuePoints(cues);
    const auto read = ZALTagSeratoMarker::markerWithData(marker.markerData().value());
    EXPECT_THAT(indexesOf(*read), ElementsAre(7, 6, 5, 4, 3, 2, 1, 0)) << "not by index";
    EXPECT_EQ(read->cuePoints().back().position(), 7u);
}

TEST(SeratoMarker, logsOneKindOfComplaintOnce) {
    const std::string badIndex = "43 55 45 00 00 00 00 0D 00 08 00 00 00 00 00 00 00 00 00 00 00";
    const std::string tooShort = "43 55 45 00 00 00 00 01 00";
    const LogCapture log;
    const auto marker =
        ZALTagSeratoMarker::markerWithData(record(tooShort + badIndex + tooShort + badIndex + drop));
    EXPECT_THAT(indexesOf(*marker), ElementsAre(0, 0, 2));
    EXPECT_THAT(log.lines(), ElementsAre("Serato cue point data too short: <43554500 00000001 00>",
                                         "** setting invalid index 8 for serato cue point"));
}

TEST(SeratoCuePoint, refusesSlotsThatDoNotExist) {
    const LogCapture log;
    auto cue = ZALTagSeratoCuePoint::cuePointWithIndex(7, 0, "");
    cue.setIndex(8);
    cue.setIndex(-1);
    EXPECT_EQ(cue.index(), 7);
    EXPECT_THAT(log.lines(), ElementsAre("** setting invalid index 8 for serato cue point",
                                         "** setting invalid index -1 for serato cue point"));
}

TEST(SeratoCuePoint, readsLabelsAsFarAsTheyGo) {
    const std::string fixed = "43 55 45 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00";
    const auto label = [&fixed](const char* rest) {
        return ZALTagSeratoCuePoint::cuePointWithData(fromHex(fixed + rest))->label();
    };
    EXPECT_EQ(label(""), "");
    EXPECT_EQ(label("00"), "");
    EXPECT_EQ(label("41 42"), "A") << "the last byte is not part of it, whatever it is";
    EXPECT_EQ(label("C3 A9 00"), "é");
    EXPECT_EQ(label("41 FF 00"), std::nullopt);
    const auto null = ZALTagSeratoCuePoint::cuePointWithIndex(0, 0, std::nullopt);
    EXPECT_EQ(toHex(null.cuePointData()), "43 55 45 00 00 00 00 0D 00 00 00 00 00 00 00 CC 00 00 00 00 00");
    EXPECT_THAT(null.description(),
                testing::MatchesRegex("<ZALTagSeratoCuePoint: 0x[0-9a-f]+> size: 13, index: 0, "
                                      "position: 0, argbColor: 7FFFFFFF, label: \\(null\\)"));
}

TEST(SeratoCuePoint, writesTheDefaultColorOfTheSlot) {
    const char* const defaults[] = {"00 CC 00 00", "00 CC 88 00", "00 00 00 CC", "00 CC CC 00",
                                    "00 00 CC 00", "00 CC 00 CC", "00 00 CC CC", "00 88 00 CC"};
    for (std::int16_t i = 0; i < 8; ++i) {
        auto cue = ZALTagSeratoCuePoint::cuePointWithIndex(i, 0, "");
        EXPECT_EQ(toHex(cue.cuePointData()).substr(14 * 3, 11), defaults[i]) << i;
        cue.setColor(0xFF010203);
        EXPECT_EQ(toHex(cue.cuePointData()).substr(14 * 3, 11), "FF 01 02 03");
    }
}

}  // namespace
