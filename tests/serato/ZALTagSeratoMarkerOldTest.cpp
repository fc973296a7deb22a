#include <zaltag/serato/ZALBase64.h>
#include <zaltag/serato/ZALTagSeratoMarkerOld.h>

#include "support/Hex.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;

using Slot = ZALTagSeratoCuePointOld;

const std::string cueSync = "00 00 00 2D 32 7F 7F 7F 7F 7F 00 7F 7F 7F 7F 7F 00 03 18 00 01 00";
const std::string cueBig = "00 00 16 B2 FF FF FF FF 00 FF FF FF FF 00 00 CC 00 01 00";
const std::string emptySync = "7F 7F 7F 7F 7F 7F 7F 7F 7F 7F 00 7F 7F 7F 7F 7F 06 30 00 00 00 00";
const std::string loopSync = "00 00 0C 23 4D 00 00 0D 1D 57 00 7F 7F 7F 7F 7F 01 1E 55 61 03 01";

std::string times(int count, const std::string& hex) {
    std::string out;
    for (int i = 0; i < count; ++i) {
        out += hex + " ";
    }
    return out;
}

TEST(SeratoMarkerOld, readsAndWritesTheSlots) {
    const std::string hex = "02 05 00 00 00 0E " + emptySync + " " + cueSync + " " + times(3, emptySync) +
                            loopSync + " " + times(8, emptySync.substr(0, 20 * 3) + "03 00") + "07 7F 7F 7F";
    const ZALData data = fromHex(hex);
    const auto marker = ZALTagSeratoMarkerOld::markerWithData(data);
    EXPECT_TRUE(marker->major() == 2 && marker->minor() == 5 && marker->color() == 0x00FFFFFF);
    ASSERT_EQ(marker->cuePoints().size(), 1u);
    const Slot& cue = marker->cuePoints()[0];
    EXPECT_EQ(cue.index(), 1) << "the number of the entry";
    EXPECT_TRUE(cue.position() == 5810 && cue.argbColor() == "0000CC00");
    EXPECT_EQ(toHex(marker->markerDataForFileType("mp3")), hex);
    EXPECT_EQ(data.size(), 318u);

    const ZALData big = marker->markerDataForFileType("M4A");
    EXPECT_EQ(big.size(), 276u);
    EXPECT_EQ(toHex(big).substr((6 + 19) * 3, 19 * 3 - 1), cueBig);
    const ZALData encoded = marker->encodedMarkerDataForFileType("m4a").value();
    const auto read = ZALTagSeratoMarkerOld::markerWithEncodedData(encoded);
    EXPECT_EQ(read, marker) << "nine loops, as placeholders are loops";
    EXPECT_EQ(toHex(dataByDecodingBase64(encoded).value()).substr(0, 42 * 3),
              toHex(bytesOf(std::string("application/octet-stream\0\0Serato Markers2\0", 42))) + " ");
}

TEST(SeratoMarkerOld, theLastCueOfASlotWins) {
    ZALTagSeratoMarkerOld marker;
    marker.setCuePoints({Slot::cuePointWithIndex(4, 1), Slot::cuePointWithIndex(5, 2),
                         Slot::cuePointWithIndex(-1, 3), Slot::cuePointWithIndex(4, 4)});
    const auto read = ZALTagSeratoMarkerOld::initWithData(marker.markerDataForFileType("m4a"), "m4a");
    ASSERT_EQ(read->cuePoints().size(), 1u);
    const Slot& cue = read->cuePoints()[0];
    EXPECT_TRUE(cue.index() == 4 && cue.position() == 4 && cue.loopIterations() == 0);
    EXPECT_EQ(cue.color(), 0x0000CC00u) << "the default of slot 4";
}

TEST(SeratoMarkerOld, entriesOf19BytesAreBigEndianInEveryFileType) {
    const auto marker =
        ZALTagSeratoMarkerOld::initWithData(fromHex("02 05 00 00 00 01" + cueBig + "FF 01 02 03"), "mp3");
    EXPECT_EQ(marker->cuePoints().at(0).position(), 5810u);
    EXPECT_EQ(marker->color(), 0xFF010203u) << "any colour is stored";
}

TEST(SeratoMarkerOld, refusesWhatDoesNotDivide) {
    const std::tuple<const char*, std::string, std::string> cases[] = {
        {"mp3", "02 05 00 00 00 01 00 00 00", "Serato marker data too short: <02050000 00010000 00>"},
        {"mp3", "02 05 00 00 00 00 00 00 00 00", "Serato marker point count parsed as 0"},
        {"mp3", "02 05 00 00 00 02 01 00 00 00 00", "Serato marker data size invalid: 11"},
        {"mp3", "02 05 00 00 00 80" + cueSync + "00 00 00 00", "Serato marker data size invalid: 32"},
        {"m4a", "02 05 FF FF FF FF" + cueBig + "00 00 00 00", "Serato marker data size invalid: 29"},
    };
    for (const auto& [fileType, data, line] : cases) {
        const LogCapture log;
        EXPECT_EQ(ZALTagSeratoMarkerOld::initWithData(fromHex(data), fileType), std::nullopt);
        EXPECT_THAT(log.lines(), ElementsAre(line));
    }
    const LogCapture log;
    EXPECT_EQ(ZALTagSeratoMarkerOld::markerWithEncodedData(bytesOf("TQ")), std::nullopt);
    EXPECT_THAT(log.lines(), ElementsAre("Failed to decode marker data: <5451> (2 bytes)"));
}

TEST(SeratoMarkerOld, complainsOnceAboutEntriesOfAnotherSize) {
    const std::pair<std::string, const char*> cases[] = {
        {"02 05 00 00 00 02" + times(40, "00") + "00 00 01 02", "20"},
        {"02 05 7F 7F 7F 7F 00 00 01 02", "0"},
    };
    for (const auto& [data, size] : cases) {
        const LogCapture log;
        const auto marker = ZALTagSeratoMarkerOld::markerWithData(fromHex(data));
        ASSERT_TRUE(marker);
        EXPECT_TRUE(marker->cuePoints().empty());
        EXPECT_EQ(marker->color(), 130u) << "the colour is sync-safe";
        EXPECT_THAT(log.lines(), ElementsAre(std::string("Invalid serato old cue point data size ") + size));
    }
}

TEST(SeratoMarkerOld, colorsThatSyncSafeNumbersCannotHaveStayUnset) {
    const std::string bad = cueSync.substr(0, 16 * 3) + "00 00 00 80 01 00";
    const LogCapture log;
    const auto marker =
        ZALTagSeratoMarkerOld::markerWithData(fromHex("02 05 00 00 00 02" + bad + bad + "00 00 00 81"));
    EXPECT_EQ(marker->color(), 0x00FFFFFFu);
    EXPECT_EQ(marker->cuePoints().at(1).color(), 0x7FFFFFFFu);
    EXPECT_THAT(log.lines(),
                ElementsAre("** Parsed invalid color value from v1 Serato cue point: 4294967168l **",
                            "** Parsed invalid color value from v1 Serato marker: 4294967169l **"));
}

TEST(SeratoMarkerOld, tellsWhetherItsColorsFit) {
    const auto with = [](int count, const char* slotColor, const char* type, const char* color) {
        const std::string slot = cueBig.substr(0, 13 * 3) + slotColor + type + "00";
        const std::string slots = times(count - 1, cueBig.substr(0, 17 * 3) + type + " 00") + slot;
        return *ZALTagSeratoMarkerOld::initWithData(
            fromHex("02 05 00 00 00 " + toHex(ZALData{static_cast<std::uint8_t>(count)}) + slots + color));
    };
    const char* const fits = "00 00 00 00";
    EXPECT_TRUE(with(1, "0F FF FF FF", "01", "0F FF FF FF").isRenderableForFileType("mp3"));
    EXPECT_TRUE(with(1, "7F FF FF FF", "01", fits).isRenderableForFileType("mp3"))
        << "stands for the default";
    EXPECT_FALSE(with(1, fits, "01", "10 00 00 00").isRenderableForFileType("mp3"));
    EXPECT_FALSE(with(5, "10 00 00 00", "01", fits).isRenderableForFileType("mp3"));
    EXPECT_TRUE(with(5, "10 00 00 00", "01", fits).isRenderableForFileType("m4a"));
    EXPECT_TRUE(with(6, "10 00 00 00", "01", fits).isRenderableForFileType("mp3")) << "not a slot";
    EXPECT_FALSE(with(9, "10 00 00 00", "03", fits).isRenderableForFileType("mp3"));
    const auto tenth = with(10, "10 00 00 00", "03", fits);
    EXPECT_TRUE(tenth.isRenderableForFileType("mp3")) << "not written";
    EXPECT_EQ(tenth.markerDataForFileType("mp3").size(), 318u);
    auto cue = Slot::cuePointWithIndex(0, 0);
    cue.setColor(0xFFCC0000);
    EXPECT_DEATH(cue.cuePointDataForFileType("mp3"), "value <= ZALTagSyncSafe4ValueMax");
    EXPECT_EQ(cue.cuePointDataForFileType("m4a").size(), 19u);
}

}  // namespace
