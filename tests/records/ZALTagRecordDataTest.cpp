#include <zaltag/records/ZALTagBeatGrid.h>
#include <zaltag/records/ZALTagCuePoints.h>
#include <zaltag/records/ZALTagEnergy.h>
#include <zaltag/records/ZALTagKey.h>
#include <zaltag/records/ZALTagRecordData.h>
#include <zaltag/records/ZALTagVelvetCascade.h>
#include <zaltag/serato/ZALBase64.h>

#include "base/Unicode.h"
#include "support/Hex.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>

#include <limits>

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::ResultOf;
using testing::StartsWith;

std::string stored(const ZALTagCustomProperty& record) {
    const auto dictionary = record.JSONDict();
    const auto bytes = dictionary ? tagData(*dictionary) : std::nullopt;
    return bytes ? std::string(bytes->begin(), bytes->end()) : "(null)";
}

std::optional<ZALJSONValue> readJSON(std::string_view json) {
    return JSONDict(dataByEncodingBase64(bytesOf(json)).value());
}

template <typename Record>
void expectStored(const Record& record, const std::string& text) {
    EXPECT_EQ(stored(record), text);
    const auto read = Record::propertyWithJSONDict(JSONDict(bytesOf(text)));
    ASSERT_TRUE(read) << text;
    EXPECT_EQ(*read, record) << text;
    EXPECT_EQ(read->hash(), record.hash()) << text;
}

// The texts were made by another base64 and JSON writer.
TEST(RecordData, everyRecordHasItsStoredBytes) {
    expectStored(ZALTagKey("5A é", 3),
                 "eyJhbGdvcml0aG0iOjMsImtleSI6IjVBIMOpIiwic291cmNlIjoicXVvcnZhbnRpcyJ9\n");
    expectStored(ZALTagEnergy(0, -1),
                 "eyJhbGdvcml0aG0iOi0xLCJlbmVyZ3lMZXZlbCI6MCwic291cmNlIjoicXVvcnZhbnRpcyJ9\n\n");
    expectStored(ZALTagBeatGrid::beatGridWithBeats(ZALArray<double>{0.5, 1.0}, 128.3f, 2),
                 "eyJhbGdvcml0aG0iOjIsImJlYXRzIjpbMC41LDEuMF0sInNvdXJjZSI6InF1b3J2YW50aXMi\n"
                 "LCJ0ZW1wbyI6MTI4LjMwMDAwMzA1MTc1Nzh9\n");
    // 1.2345 s is stored as 1234.5, and a cue without a name without "name".
    expectStored(
        ZALTagCuePoints::cuePointsWithCuePointArray({ZALTagCuePoint(1.2345, "Drop"), ZALTagCuePoint()}, 1),
        "eyJhbGdvcml0aG0iOjEsImN1ZXMiOlt7Im5hbWUiOiJEcm9wIiwidGltZSI6MTIzNC41fSx7\n"
        "InRpbWUiOjAuMH1dLCJzb3VyY2UiOiJxdW9ydmFudGlzIn0=\n");
    expectStored(ZALTagVelvetCascade(nullptr, true),
                 "eyJiYWNrdXBGaWxlTmFtZSI6IiIsImlzUHJvY2Vzc2VkIjp0cnVlfQ==\n");
}

TEST(RecordData, nothingIsStoredAndReadInSilence) {
    const LogCapture log;
    EXPECT_EQ(stored(ZALTagKey(std::nullopt, 3)), "(null)");
    EXPECT_EQ(stored(ZALTagBeatGrid::beatGridWithBeats(std::nullopt, 120, 3)), "(null)");
    for (const char* text : {"", "\n\n", "==\n", "e"}) {
        EXPECT_EQ(JSONDict(bytesOf(text)), std::nullopt) << text;
    }
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(RecordData, whatJSONCannotHoldIsLoggedAndNull) {
    const std::pair<ZALJSONValue, const char*> cases[] = {
        {ZALJSONValue::Object{{"a", std::numeric_limits<double>::quiet_NaN()}}, R"({"a":"nan"})"},
        {ZALJSONValue::Object{{"\xFF", "z\xC3"}}, "{\"\uFFFD\":\"z\uFFFD\"}"},
        {ZALJSONValue::Array{1}, "[1]"},
        {nullptr, "null"},
    };
    for (const auto& [dictionary, shown] : cases) {
        const LogCapture log;
        EXPECT_EQ(tagData(dictionary), std::nullopt) << shown;
        EXPECT_THAT(log.lines(), ElementsAre(std::string("Invalid generated json object: ") + shown));
    }
}

TEST(RecordData, bytesWithoutAnObjectAreOneLineAndNull) {
    const std::pair<std::string, std::string> cases[] = {{"hello", "hello"},
                                                         {"{\"key\":\"\xFF\"}", "{\"key\":\"\uFFFD\"}"},
                                                         {"[1]", "[1]"},
                                                         {R"({"key":"8A"} x)", R"({"key":"8A"} x)"},
                                                         {std::string(600, '['), std::string(600, '[')}};
    for (const auto& [json, shown] : cases) {
        const LogCapture log;
        EXPECT_EQ(readJSON(json), std::nullopt) << shown;
        EXPECT_THAT(log.lines(),
                    ElementsAre(AllOf(StartsWith("failed to parse json data " + shown + " with error: "),
                                      ResultOf(zal::isValidUTF8, true))));
    }
}

TEST(RecordData, absentAndMistypedEntriesReadAsNullOrZero) {
    EXPECT_EQ(ZALTagKey::initWithJSONDict(std::nullopt), std::nullopt);
    EXPECT_EQ(ZALTagEnergy::initWithJSONDict(ZALJSONValue::Array{1}), std::nullopt);

    const auto empty = readJSON("{}");
    EXPECT_FALSE(ZALTagKey::initWithJSONDict(empty)->key() ||
                 ZALTagBeatGrid::initWithJSONDict(empty)->beats() ||
                 !ZALTagCuePoints::initWithJSONDict(empty)->cuePoints().empty() ||
                 ZALTagVelvetCascade::initWithJSONDict(empty)->isProcessed());
    EXPECT_EQ(*ZALTagEnergy::initWithJSONDict(empty), ZALTagEnergy());

    const auto odd =
        readJSON(R"({"algorithm":"7","key":5,"energyLevel":true,"beats":["1.5",null,2],"tempo":128.3,
        "cues":[4,{"time":"500","name":1}],"backupFileName":null,"isProcessed":1})");
    ASSERT_TRUE(odd);
    EXPECT_EQ(ZALTagKey::initWithJSONDict(odd)->key(), std::nullopt);
    EXPECT_EQ(*ZALTagEnergy::initWithJSONDict(odd), ZALTagEnergy(1, 7));
    EXPECT_EQ(*ZALTagBeatGrid::initWithJSONDict(odd),
              ZALTagBeatGrid::beatGridWithBeats(ZALArray<double>{1.5, 0, 2}, 128.3f, 7))
        << "the tempo is narrowed to single precision";
    EXPECT_TRUE(
        tagData(*ZALTagBeatGrid::initWithJSONDict(readJSON(R"({"beats":[],"tempo":1e300})"))->JSONDict()))
        << "a tempo beyond it saturates, so that the record can be stored again";
    const ZALTagCuePoint half = ZALTagCuePoint(0.5, std::nullopt);
    EXPECT_EQ(ZALTagCuePoints::initWithJSONDict(odd)->cuePoints(),
              (ZALArray<ZALTagCuePoint>{ZALTagCuePoint(), half}));
    EXPECT_EQ(*ZALTagVelvetCascade::initWithJSONDict(odd), ZALTagVelvetCascade(nullptr, true));
    EXPECT_EQ(ZALTagBeatGrid::initWithJSONDict(readJSON(R"({"beats":7})"))->beats(), std::nullopt);
}

}  // namespace
