#include "collection/XML.h"
#include "support/CollectionFixtures.h"
#include "support/LogCapture.h"
#include "traktor/TrackLocation.h"
#include "traktor/TraktorProgram.h"

#include <zaltag/traktor/ZALTraktorTrack.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace {

using testing::ElementsAre;

ZALTraktorCuePoint cue(std::int64_t type, double start, double length, std::int64_t index = 0,
                       const char* name = "a") {
    auto made = ZALTraktorCuePoint(ZALTagCuePoint(start, ZALNullableString(name)), index);
    made.setType(type);
    made.setLength(length);
    return made;
}

// An entry, outside any database.
class TraktorTrack : public testing::Test, protected CollectionHost {
  protected:
    std::shared_ptr<const ZALTraktorTrack> track(const std::string& content,
                                                 const std::string& attributes = "") {
        zal::XMLDocument document;
        const auto element = document.load("<ENTRY " + attributes + ">" + content + "</ENTRY>");
        return ZALTraktorTrack::initWithXMLElement(element)->copy();
    }
    std::vector<double> beats(const std::string& content) {
        const auto times = track(content)->beatTimes();
        return times ? times->elements() : std::vector<double>{-1};
    }
};

}  // namespace

TEST(ZALTraktorCuePoint, comparesAllValuesTimesInMicroseconds) {
    for (const auto& same : {cue(0, 1, 2), cue(0, 1.0000004, 2.0000004)}) {
        EXPECT_EQ(same, cue(0, 1, 2));
        EXPECT_EQ(same.hash(), cue(0, 1, 2).hash());
    }
    for (const auto& other :
         {cue(0, 1.0000006, 2), cue(0, 1, 3), cue(0, 1, 2, 1), cue(5, 1, 2), cue(0, 1, 2, 0, "b")}) {
        EXPECT_FALSE(other == cue(0, 1, 2)) << other.description();
        EXPECT_NE(other.hash(), cue(0, 1, 2).hash());
    }
    EXPECT_EQ(cue(4, 1, 2, 7), cue(4, 1, 2)) << "a grid marker has no slot";
    EXPECT_EQ(cue(4, 0, 0).typeName(), "Grid");
    EXPECT_EQ(cue(6, 0, 0).typeName(), std::nullopt);
}

TEST(ZALTraktorCuePoint, isWrittenWithSixDecimalsAndReadsBackAsItsCopy) {
    zal::XMLDocument document;
    const zal::XMLElement entry = document.makeRoot("ENTRY");
    const std::pair<ZALTraktorCuePoint, const char*> rows[] = {
        {cue(0, 12.5, 0, 2),
         "NAME=a DISPL_ORDER=0 TYPE=0 START=12500.000000 LEN=0.000000 REPEATS=-1 HOTCUE=2 "},
        {cue(5, 0.0522612837, 1.2345678912, -3, ""),
         "DISPL_ORDER=0 TYPE=5 START=52.261284 LEN=1234.567891 REPEATS=-1 HOTCUE=0 "},
        {cue(4, 1, 0, 7), "NAME=a DISPL_ORDER=0 TYPE=4 START=1000.000000 LEN=0.000000 REPEATS=-1 HOTCUE=0 "},
    };
    for (const auto& [made, expected] : rows) {
        const zal::XMLElement element = made.xmlElement(entry);
        std::string attributes;
        for (const auto& [name, value] : element.attributes()) {
            attributes += name + "=" + value + " ";
        }
        EXPECT_EQ(attributes, expected);
        EXPECT_EQ(ZALTraktorCuePoint::initWithXMLElement(element), made.copyAsStored());
    }
    EXPECT_EQ(cue(0, std::nan(""), INFINITY).copyAsStored(), cue(0, 0, 0)) << "what is no number";
    EXPECT_EQ(ZALTraktorCuePoint::initWithXMLElement(entry), std::nullopt);
}

TEST(TraktorLocation, makesPathAndKey) {
    const std::tuple<const char*, const char*, const char*, const char*, const char*> rows[] = {
        {"Disk", "/:Users/:dj/:", "a.mp3", "/Users/dj/a.mp3", "Disk/:Users/:dj/:a.mp3"},
        {"USB", "/:Users/:dj/:", "a.mp3", "/Volumes/USB/Users/dj/a.mp3", "USB/:Users/:dj/:a.mp3"},
        {"C:", "/:", "a.mp3", "/Volumes/C:/a.mp3", "C:/:a.mp3"},
        {nullptr, "/:x//y/:", "a//b/c", "/x:y/a:b/c", "/:x//y/:a//b/c"},
        {"Disk", "/:/:x", "/f", ":x/f", "Disk/:/:x/f"},
        {"", "", "", "/Volumes", ""},
        {"Disk", "", "f", "f", "Diskf"},
        {"Disk", nullptr, "f", nullptr, "Diskf"},
        {"Disk", "/:x", nullptr, nullptr, "Disk/:x"},
    };
    const auto nullable = [](const char* text) { return text ? ZALNullableString(text) : std::nullopt; };
    for (const auto& [volume, folder, file, path, key] : rows) {
        const zal::TraktorLocation location{nullable(volume), nullable(folder), nullable(file)};
        EXPECT_EQ(zal::pathOf(location, "Disk"), nullable(path)) << key;
        EXPECT_EQ(zal::keyOf(location), key);
    }
}

TEST(TraktorProgram, isKnownByTheNameOfItsExecutable) {
    for (const char* name :
         {"Traktor", "traktor", "Traktor Pro 3", "Traktor Pro 4.exe", "TRAKTOR.EXE", "Traktor 2.11.3"}) {
        EXPECT_TRUE(zal::isTraktor(name)) << name;
    }
    for (const char* name : {"", "zaltag", "trak", "traktor2rekordbox", "my Traktor", "Traktor-backup",
                             "Traktor Pro x", "Traktor Audio 6 Control Panel.exe"}) {
        EXPECT_FALSE(zal::isTraktor(name)) << name;
    }
}

TEST_F(TraktorTrack, readsBeatsFromItsGridMarkers) {
    const std::string info = "<INFO PLAYTIME='9' PLAYTIME_FLOAT='3'/><TEMPO BPM='60'/>";
    const auto grid = [](const char* start) {
        return std::string("<CUE_V2 TYPE='4' START='") + start + "' HOTCUE='3'/>";
    };
    EXPECT_THAT(beats(info + grid("500")), ElementsAre(0.5, 1.5, 2.5));
    // A segment ends when the time passes the next start, however close it came before.
    EXPECT_THAT(beats(info + grid("500") + "<CUE_V2 TYPE='0' START='900'/>" + grid("1550")),
                ElementsAre(0.5, 1.5, 1.55, 2.55));
    EXPECT_THAT(beats(info + grid("0") + grid("1000")), ElementsAre(0, 1, 1, 2));
    EXPECT_THAT(beats("<INFO PLAYTIME='2'/><TEMPO BPM='60'/>" + grid("0")), ElementsAre(0, 1));
    for (const std::string& without :
         {info, "<TEMPO BPM='60'/>" + grid("0"), "<INFO PLAYTIME='9'/>" + grid("0"),
          "<INFO PLAYTIME='9'/><TEMPO BPM='0'/>" + grid("0"), "<INFO PLAYTIME='9'/><TEMPO/>" + grid("0"),
          "<INFO PLAYTIME='9'/><TEMPO BPM='-5'/>" + grid("0")}) {
        EXPECT_THAT(beats(without), ElementsAre(-1)) << without;
    }
}

TEST_F(TraktorTrack, readsItsDate) {
    using std::chrono::sys_days, std::chrono::seconds;
    const auto date = [this](const std::string& day, const std::string& time) {
        return track("", "MODIFIED_DATE='" + day + "' MODIFIED_TIME='" + time + "'")->modificationDate();
    };
    const auto day = sys_days(std::chrono::year(2025) / 7 / 9);
    EXPECT_EQ(date("2025/7/9", "54587"), day + seconds(54587));
    EXPECT_EQ(date("2025/07/09", ""), day);
    EXPECT_LT(date("2025/7/9", "-9223372036854775808"), day);
    EXPECT_GT(date("2025/7/9", "9223372036854775807"), day);
    const LogCapture log;
    EXPECT_EQ(date("2023/13/45", "1"), std::nullopt);
    EXPECT_EQ(track("")->modificationDate(), std::nullopt);
    EXPECT_THAT(log.lines(), ElementsAre("could not convert '2023/13/45'", "could not convert '(null)'"));
}
