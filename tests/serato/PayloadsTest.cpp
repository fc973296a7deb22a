// payloads.txt: payloads in hexadecimal digits, what is read of them, what is written back, and the log. A
// block is a case; a line a word and its value.
//
//     kind  "markers2" a record, "payload" what such a one wraps, "grid", or the type of the file of a legacy
//     record read  in words; without this line it is null loops  of Markers2 out   what is written back;
//     "mp3" and "m4a" for a legacy record, "-" where it cannot be snap  times and where the grid moves them
//     log   a line each; up to a "…" only

#include <zaltag/serato/ZALBase64.h>
#include <zaltag/serato/ZALTagSeratoGrid.h>
#include <zaltag/serato/ZALTagSeratoMarker.h>
#include <zaltag/serato/ZALTagSeratoMarkerOld.h>

#include "serato/CueColors.h"
#include "serato/CueEntries.h"
#include "support/AudioFixtures.h"
#include "support/Hex.h"
#include "support/LogCapture.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

namespace {

using testing::ElementsAre;

struct Case {
    std::string name;
    std::map<std::string, std::string> lines;  // those of a word behind each other
    std::vector<std::string> log;
};

std::vector<Case> cases() {
    std::ifstream file(ZALTAG_PAYLOADS);
    std::vector<Case> all(1);
    for (std::string line; std::getline(file, line);) {
        const std::string word = line.substr(0, line.find(' ')),
                          value = line.substr(word.size() + !word.empty());
        if (line.empty())
            all.emplace_back();
        else if (word == "name")
            all.back().name = value;
        else if (word == "log")
            all.back().log.push_back(value);
        else
            all.back().lines[word] += all.back().lines.contains(word) ? " " + value : value;
    }
    return all;
}

// The encoded form of a record, which reads as the record does.
ZALData encoded(const ZALData& record) {
    return dataByEncodingBase64(joined({ZALData(42), record})).value();
}

using Lines = std::map<std::string, std::string>;

// All that the lines of a case tell of it.
Lines readMarkers2(const ZALData& record) {
    const auto marker = ZALTagSeratoMarker::markerWithData(record);
    if (!marker) return {};
    std::string read;
    for (const ZALTagSeratoCuePoint& cue : marker->cuePoints()) {
        read += fmt::format("{}{}@{} {} {}", read.empty() ? "" : "; ", cue.index(), cue.position(),
                            cue.argbColor(), cue.label().value_or("null"));
    }
    std::string loops;
    for (const ZALTagSeratoLoop& loop : marker->loops()) {
        loops +=
            fmt::format("{}{}@{}-{} {:X} {} {}", loops.empty() ? "" : "; ", loop.index(), loop.position(),
                        loop.endPosition(), loop.color(), loop.isLocked(), loop.label().value_or("null"));
    }
    const ZALData written = marker->markerData().value();
    const LogCapture silence;
    EXPECT_EQ(ZALTagSeratoMarker::markerWithEncodedData(encoded(record)), marker);
    EXPECT_EQ(ZALTagSeratoMarker::markerWithEncodedData(marker->encodedMarkerData().value()),
              ZALTagSeratoMarker::markerWithData(written));
    return {{"read", read},
            {"loops", loops},
            {"out", toHex(dataByDecodingBase64(ZALDataView(written).subspan(2)).value())}};
}

Lines readGrid(const ZALData& record, const std::string& snap) {
    const auto grid = ZALTagSeratoGrid::gridWithData(record);
    if (!grid) return {};
    std::string read, snapped;
    for (const ZALTagSeratoGridPoint& point : grid->gridPoints()) {
        const bool isLast = &point == &grid->gridPoints().back();
        read += isLast ? fmt::format("{} {} bpm", point.position(), point.tempo())
                       : fmt::format("{} {} beats; ", point.position(), point.beatsToNext());
    }
    std::istringstream times(snap);
    for (std::string time, rest; times >> time && std::getline(times, rest, ';');) {
        snapped += fmt::format("{}{} {}", snapped.empty() ? "" : "; ", time,
                               grid->gridTimeForTime(std::strtod(time.c_str(), nullptr)));
    }
    const LogCapture silence;
    EXPECT_TRUE(ZALTagSeratoGrid::gridWithEncodedData(encoded(record)));
    return {{"read", read}, {"snap", snapped}};
}

Lines readOld(const ZALData& record, const std::string& type) {
    const auto marker = ZALTagSeratoMarkerOld::initWithData(record, type);
    if (!marker) return {};
    std::string read = fmt::format("{:08X}", marker->color());
    for (const ZALTagSeratoCuePointOld& cue : marker->cuePoints()) {
        read += fmt::format("; {}@{} {}", cue.index(), cue.position(), cue.argbColor());
    }
    Lines lines{{"read", read}};
    for (const char* to : {"mp3", "m4a"}) {
        lines[to] = marker->isRenderableForFileType(to) ? toHex(marker->markerDataForFileType(to)) : "-";
    }
    const LogCapture silence;
    const auto again =
        ZALTagSeratoMarkerOld::markerWithEncodedData(*marker->encodedMarkerDataForFileType("m4a"));
    EXPECT_TRUE(again && toHex(again->markerDataForFileType("m4a")) == lines["m4a"]);
    return lines;
}

TEST(Payloads, areReadAndWrittenAsTheirFileSays) {
    for (const Case& one : cases()) {
        const auto line = [&one](const char* word) {
            const auto found = one.lines.find(word);
            return found == one.lines.end() ? std::string() : found->second;
        };
        const std::string kind = line("kind");
        ZALData data = fromHex(line("in"));
        if (kind == "payload") data = joined({{1, 1}, *dataByEncodingBase64(joined({{1, 1}, data}))});
        const LogCapture log;
        Lines lines;
        try {
            lines = kind == "grid"                   ? readGrid(data, line("snap"))
                    : kind == "mp3" || kind == "m4a" ? readOld(data, kind)
                                                     : readMarkers2(data);
        } catch (const std::out_of_range&) {
            lines = {{"read", "out of range"}};
        }
        if (kind == "payload") lines["out"].erase(0, 6);
        EXPECT_EQ(one.lines.contains("read"), lines.contains("read")) << one.name;
        for (const auto& [word, value] : one.lines) {
            EXPECT_TRUE(word == "kind" || word == "in" || lines[word] == value)
                << one.name << ": " << word << " " << lines[word];
        }
        EXPECT_EQ(log.lines().size(), one.log.size()) << one.name;
        for (std::size_t i = 0; i < std::min(log.lines().size(), one.log.size()); ++i) {
            const std::string start = one.log[i].substr(0, one.log[i].find("…"));
            EXPECT_TRUE(log.lines()[i] == one.log[i] ||
                        (start != one.log[i] && log.lines()[i].starts_with(start)))
                << one.name << ": " << log.lines()[i];
        }
    }
}

TEST(Payloads, encodedFormsBeginWithTheirNamesAndBearPadding) {
    const ZALData cue = ZALTagSeratoCuePoint::cuePointWithIndex(2, 250, "Drop").cuePointData();
    ZALData record = joined({{1, 1}, *dataByEncodingBase64(joined({{1, 1}, cue}))});  // 27 bytes, no padding
    record.back() = 0;
    record.resize(470);
    const auto marker = ZALTagSeratoMarker::markerWithData(record);
    EXPECT_EQ(marker->cuePoints().size(), 1u);
    const ZALData text = marker->encodedMarkerData().value();
    EXPECT_EQ(ZALTagSeratoMarker::markerWithEncodedData(joined({text, {'A', 0}}))->cuePoints().size(), 1u);
    ZALTagSeratoMarkerOld old;
    const ZALData head = bytesOf(std::string("application/octet-stream\0\0Serato Markers2\0", 42));
    for (const ZALData& one : {text, *old.encodedMarkerDataForFileType("m4a")}) {
        const ZALData decoded = dataByDecodingBase64(one).value();
        EXPECT_EQ(ZALData(decoded.begin(), decoded.begin() + 42), head);
    }
    const LogCapture log;
    const ZALData broken = bytesOf("TQ");
    EXPECT_FALSE(ZALTagSeratoMarker::markerWithEncodedData(broken) ||
                 ZALTagSeratoMarkerOld::markerWithEncodedData(broken) ||
                 ZALTagSeratoGrid::gridWithEncodedData(broken) ||
                 ZALTagSeratoGridPoint::gridPointWithData(fromHex("01")) || zal::findNextCue({}));
    const std::string failed = "Failed to decode marker data: <5451> (2 bytes)";
    EXPECT_THAT(log.lines(),
                ElementsAre(failed, failed, "Failed to decode grid data: <5451> (2 bytes)",
                            "Serato grid point incorrect size: <01>", "NULL buffer passed to nextCue!\n"));
}

TEST(Payloads, theLastCueOfASlotWinsAndTheFirstEightAreWritten) {
    using Slot = ZALTagSeratoCuePointOld;
    ZALTagSeratoMarkerOld old;
    old.setCuePoints({Slot::cuePointWithIndex(4, 1), Slot::cuePointWithIndex(5, 2),
                      Slot::cuePointWithIndex(-1, 3), Slot::cuePointWithIndex(4, 4)});
    const auto slots =
        ZALTagSeratoMarkerOld::initWithData(old.markerDataForFileType("m4a"), "m4a")->cuePoints();
    ASSERT_EQ(slots.size(), 1u);
    EXPECT_TRUE(slots[0].index() == 4 && slots[0].position() == 4 && slots[0].loopIterations() == 0);
    EXPECT_EQ(slots[0].color(), 0x0000CC00u) << "the default of slot 4";

    ZALTagSeratoMarker marker;
    std::vector<ZALTagSeratoCuePoint> cues;
    for (std::uint32_t i = 0; i < 9; ++i) {
        cues.push_back(ZALTagSeratoCuePoint::cuePointWithIndex(static_cast<std::int16_t>(7 - i % 8), i, ""));
    }
    marker.setCuePoints(cues);
    const auto read = ZALTagSeratoMarker::markerWithData(marker.markerData().value())->cuePoints();
    ASSERT_EQ(read.size(), 8u);
    for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_EQ(read[i].cuePointData(), cues[i].cuePointData()) << "not by index";
    }
}

TEST(CueColors, areTheNearestToTheEye) {
    // Pads of Rekordbox, and what lies between two of Serato's by numbers alone.
    const std::pair<std::uint32_t, std::uint32_t> colors[] = {
        {0xE62828, 0xCC0000}, {0x28E214, 0x00CC00}, {0x305AFF, 0x0044CC}, {0xB432FF, 0x8800CC},
        {0xE0641B, 0xCC4400}, {0x00CC44, 0x00CC44}, {0x00E0FF, 0x00CCCC}, {0xFF127B, 0xCC0044}};
    for (const auto& [rgb, nearest] : colors) {
        EXPECT_EQ(zal::nearestCueColor(rgb), nearest) << std::hex << rgb;
    }
}

TEST(CuePoint, hasASlotAndItsColor) {
    const LogCapture log;
    auto cue = ZALTagSeratoCuePoint::cuePointWithIndex(7, 0, std::nullopt);
    cue.setIndex(8);
    cue.setIndex(-1);
    EXPECT_EQ(toHex(cue.cuePointData()), "43 55 45 00 00 00 00 0D 00 07 00 00 00 00 00 88 00 CC 00 00 00");
    EXPECT_THAT(log.lines(), ElementsAre("** setting invalid index 8 for serato cue point",
                                         "** setting invalid index -1 for serato cue point"));
    auto old = ZALTagSeratoCuePointOld::cuePointWithIndex(0, 0);
    old.setColor(0xFFCC0000);
    EXPECT_DEATH(old.cuePointDataForFileType("mp3"), "value <= ZALTagSyncSafe4ValueMax");
    EXPECT_EQ(old.cuePointDataForFileType("m4a").size(), 19u);
}

}  // namespace
