// Cue points with pads, colours, loops and kinds, in and out of collections.

#include "support/CollectionPrograms.h"
#include "support/LogCapture.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <sstream>

namespace {

using testing::ElementsAre;

// "PAD TIME[-END] NAME COLOR KIND", "?" where nothing is said.
ZALTagCuePoint cue(const std::string& text) {
    std::istringstream words(text);
    std::string pad, time, name, color, kind;
    words >> pad >> time >> name >> color >> kind;
    ZALTagCuePoint cue(std::stod(time), name);
    if (const auto dash = time.find('-'); dash != time.npos) cue.setEnd(std::stod(time.substr(dash + 1)));
    if (pad != "?") cue.setPad(std::stoi(pad));
    if (color != "?") cue.setColor(static_cast<std::uint32_t>(std::stoul(color, nullptr, 16)));
    if (kind != "?" && !cue.end()) cue.setKind(*ZALTagCuePoint::kindOfName(kind));
    return cue;
}

std::string told(const ZALTagCuePoint& cue) {
    return fmt::format("{} {}{} {} {} {}", cue.pad() ? std::to_string(*cue.pad()) : "?", cue.time(),
                       cue.end() ? fmt::format("-{}", *cue.end()) : "", cue.name().value_or("null"),
                       cue.color() ? fmt::format("{:06X}", *cue.color()) : "?",
                       ZALTagCuePoint::nameOfKind(cue.kind()));
}

std::vector<std::string> told(const ZALArray<ZALTagCuePoint>& cues) {
    std::vector<std::string> all;
    for (const ZALTagCuePoint& one : cues) {
        all.push_back(told(one));
    }
    return all;
}

ZALArray<ZALTagCuePoint> cuesOf(std::initializer_list<const char*> texts) {
    std::vector<ZALTagCuePoint> all;
    for (const char* text : texts) {
        all.push_back(cue(text));
    }
    return all;
}

class WholeCues : public testing::Test, protected CollectionHost {
  protected:
    void open(const CollectionKind& kind, const std::string& tracks,
              ZALCollectionSaveMode mode = ZALCollectionSaveMode::changedTracks) {
        host->setCollectionSaveMode(mode);
        database = kind.open(file("collection.xml", kind.head + tracks + kind.tail));
        queue = kind.queue(database);
    }
    std::shared_ptr<const ZALCollectionTrack> track() const { return database->track("/1.mp3"); }
    // What the track holds after a request, which a second one finds there.
    std::vector<std::string> after(const ZALArray<ZALTagCuePoint>& cues, const ZALCueRequest& request) {
        queue->setCuePoints(cues, "/1.mp3", request);
        EXPECT_TRUE(saved(*queue).success);
        EXPECT_TRUE(track()->hasCuePoints(cues, request));
        const std::string once = contentOf(root() + "/collection.xml");
        queue->setCuePoints(cues, "/1.mp3", request);
        EXPECT_TRUE(saved(*queue).success);
        const bool isEvery = host->collectionSaveMode() == ZALCollectionSaveMode::everyTrackWithCues;
        EXPECT_TRUE(isEvery || contentOf(root() + "/collection.xml") == once);
        return told(track()->cuePoints(ZALCueKind::all));
    }
    static std::vector<std::string> held(const ZALCuePlan& plan) {
        std::vector<std::string> all;
        for (const ZALCueOutcome& outcome : plan.outcomes) {
            all.push_back(outcome.held ? told(*outcome.held) : "-");
        }
        return all;
    }

    const CollectionKind& rekordbox = collectionKinds()[0];
    const CollectionKind& traktor = collectionKinds()[1];
    const LogCapture log;
    std::shared_ptr<ZALCollectionDatabase> database;
    std::shared_ptr<ZALCollectionQueue> queue;
};

std::string entry(const std::string& cues) {
    return R"(<ENTRY MODIFIED_DATE="2000/1/1" MODIFIED_TIME="7"><LOCATION DIR="/:" FILE="1.mp3"/>)" + cues +
           "</ENTRY>";
}
std::string mark(const char* attributes) {
    return fmt::format("<CUE_V2 {}></CUE_V2>", attributes);
}
const std::string grid =
    R"(<CUE_V2 NAME="AutoGrid" TYPE='4' START="50.5" LEN="0" HOTCUE="0"><GRID BPM="120"></GRID></CUE_V2>)";
const std::string colored =
    R"(<ENTRY MODIFIED_DATE="2000/1/1"><LOCATION DIR="/:" FILE="2.mp3"/><CUE_V2 TYPE="0" START="1" COLOR="#FFFFFF"/></ENTRY>)";

TEST_F(WholeCues, ofTraktorAreReadByTheirTypes) {
    open(traktor,
         entry(grid + mark(R"(NAME="a" TYPE="5" START="1000" LEN="500" HOTCUE="-1" COLOR="#12abEF")") +
               mark(R"(NAME="b" TYPE="3" START="2000" LEN="500" HOTCUE="2" COLOR="red")") +
               mark(R"(NAME="c" TYPE="1" START="3000" LEN="0" HOTCUE="9" COLOR="#12345G")") +
               mark(R"(NAME="d" TYPE="2" START="4000" LEN="0" HOTCUE="2")") +
               mark(R"(NAME="e" TYPE="5" START="5000" LEN="-1" HOTCUE="7")")));
    EXPECT_THAT(told(track()->cuePoints(ZALCueKind::all)),
                ElementsAre("-1 1-1.5 a 12ABEF loop", "2 2 b ? load", "2 4 d ? fade-out",
                            "7 5-4.999 e ? loop", "9 3 c ? fade-in"));
}

TEST_F(WholeCues, areWrittenToTraktorAndItsGridGivesWay) {
    const auto asked = cuesOf({"0 8 Drop CC0000 cue", "-1 1-3 Roll 27AAE1 loop", "2 5 In ? fade-in",
                               "0 9 Late ? cue", "11 6 Far ? load", "? 7 Any ? cue", "5 4-2 Odd ? loop"});
    open(traktor, entry(grid + mark(R"(NAME="old" TYPE="0" START="1000" HOTCUE="3")")) + colored);
    const ZALCuePlan plan = track()->planCuePoints(asked, ZALCueKind::all);
    EXPECT_EQ(plan.gridMarkersOffPads, 1U);
    const auto expected =
        ElementsAre("-1 1-3 Roll 27AAE1 loop", "5 4 Odd ? cue", "2 5 In ? fade-in", "1 6 Far ? load",
                    "3 7 Any ? cue", "0 8 Drop CC0000 cue", "4 9 Late ? cue");
    EXPECT_THAT(held(plan), expected);
    EXPECT_EQ(plan.count(&ZALCueOutcome::isLessThanAsked), 3U) << "Odd, Far, Late";
    EXPECT_THAT(after(asked, ZALCueKind::all), testing::UnorderedElementsAreArray(held(plan)));
    const std::string content = contentOf(root() + "/collection.xml");
    std::string moved = grid;
    moved.replace(moved.find("HOTCUE=\"0\""), 10, "HOTCUE=\"-1\"");
    EXPECT_EQ(countOf(content, moved), 1U) << "and nothing else of it";
    EXPECT_EQ(
        countOf(
            content,
            R"(<CUE_V2 NAME="Roll" DISPL_ORDER="0" TYPE="5" START="1000.000000" LEN="2000.000000" REPEATS="-1" HOTCUE="-1" COLOR="#27AAE1"></CUE_V2>)"),
        1U);
}

TEST_F(WholeCues, ofNoPadAndNoColourStandInTraktorAsTheyAlwaysDid) {
    open(traktor, entry(grid));
    EXPECT_THAT(after(cuesOf({"? 2 b CC0000 cue", "? 1 a ? cue"}), ZALCueKind::all),
                ElementsAre("0 1 a ? cue", "1 2 b ? cue"))
        << "no cue of the collection has a colour";
    EXPECT_EQ(countOf(contentOf(root() + "/collection.xml"), grid), 1U);
    EXPECT_EQ(track()
                  ->planCuePoints(cuesOf({"? 2 b CC0000 cue"}), ZALCueKind::all)
                  .count(&ZALCueOutcome::hasOtherColor),
              1U);
    for (const auto mode :
         {ZALCollectionSaveMode::changedTracks, ZALCollectionSaveMode::everyTrackWithCues}) {
        open(traktor, entry(grid), mode);
        EXPECT_THAT(after(cuesOf({"0 2 b ? cue", "-1 1 a ? cue"}), ZALCueKind::all),
                    ElementsAre("-1 1 a ? cue", "0 2 b ? cue"));
        EXPECT_EQ(countOf(contentOf(root() + "/collection.xml"), "HOTCUE=\"-1\""), 2U);
    }
}

TEST_F(WholeCues, ofRekordboxBecomeTheNearestThingItHas) {
    const std::string marks =
        R"(<POSITION_MARK Name="mine" Type="0" Start="0.5" End="" Num="-1" Red="1" Green="2" Blue="3"/>)"
        R"(<POSITION_MARK Name="a" Type="4" Start="1" End="2" Num="12" Red="40" Green="226" Blue="20"/>)"
        R"(<POSITION_MARK Name="b" Type="3" Start="3" Num="1" Red="40" Green="256" Blue="20"/>)"
        R"(<POSITION_MARK Name="c" Type="0" Start="4" Num="2" Red="40" Green="" Blue="20"/>)";
    const auto content = [&] {
        return R"(<TRACK TrackID="1" Location="file://localhost/1.mp3">)" + marks + "</TRACK>";
    };
    open(rekordbox, content());
    EXPECT_THAT(told(track()->cuePoints(ZALCueKind::all)),
                ElementsAre("-1 0.5 mine 010203 cue", "1 3 b ? load", "2 4 c ? cue", "12 1-2 a 28E214 loop"));
    const auto asked = cuesOf({"12 1-2 a 28E215 loop", "0 8 Load ? load", "3 9 Out FF0000 fade-out",
                               "3 7-7.5 Roll ? loop", "-1 6-6.5 Low 27AAE1 loop", "17 5 Far ? cue"});
    for (const auto mode :
         {ZALCollectionSaveMode::changedTracks, ZALCollectionSaveMode::everyTrackWithCues}) {
        open(rekordbox, content(), mode);
        const ZALCuePlan plan = track()->planCuePoints(asked, ZALCueKind::hot);
        EXPECT_THAT(held(plan),
                    ElementsAre("12 1-2 a 28E215 loop", "0 5 Far ? cue", "-1 6-6.5 Low 27AAE1 loop",
                                "3 7-7.5 Roll ? loop", "-1 8 Load ? cue", "1 9 Out FF0000 cue"));
        auto expected = held(plan);
        const bool keepsColors = mode == ZALCollectionSaveMode::changedTracks;
        expected.insert(expected.begin(), keepsColors ? "-1 0.5 mine 010203 cue" : "-1 0.5 mine ? cue");
        auto found = after(asked, ZALCueKind::hot);
        if (keepsColors) {
            EXPECT_THAT(found, testing::UnorderedElementsAreArray(expected));
        } else {
            EXPECT_EQ(found.size(), expected.size()) << "none twice";
        }
    }
    open(rekordbox, content());
    after(asked, ZALCueKind::hot);
    EXPECT_EQ(
        countOf(
            contentOf(root() + "/collection.xml"),
            R"(<POSITION_MARK Name="Low" End="6.5" Start="6" Type="4" Num="-1" Red="39" Green="170" Blue="225" />)"),
        1U);
    open(rekordbox, content());
    EXPECT_THAT(after(cuesOf({"3 9 Out ? cue", "-1 6 Low ? cue"}), ZALCueKind::all),
                ElementsAre("-1 6 Low ? cue", "-1 9 Out ? cue", "3 9 Out ? cue"));
}

TEST_F(WholeCues, areMovedByARequestsOffsetBeforeTheBeatsAndNotToThem) {
    open(
        rekordbox,
        R"(<TRACK TrackID="1" TotalTime="30" Location="file://localhost/1.mp3"><TEMPO Inizio="0" Bpm="60"/></TRACK>)");
    ZALCueRequest request(ZALCueKind::hot);
    request.offset = 0.3;
    EXPECT_THAT(after(cuesOf({"1 2.3-4.3 a ? loop", "0 7.1 b ? cue"}), request),
                ElementsAre("0 7 b ? cue", "1 3-5 a ? loop"));
    request.keepsTimes = true;
    request.offset = 0.25;
    EXPECT_THAT(after(cuesOf({"1 2.25-4.25 a ? loop", "0 7 b ? cue"}), request),
                ElementsAre("0 7.25 b ? cue", "1 2.5-4.5 a ? loop"));
}

}  // namespace
