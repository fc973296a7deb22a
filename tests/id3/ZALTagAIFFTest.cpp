#include <zaltag/id3/ZALTagAIFF.h>

#include "support/AudioFixtures.h"
#include "support/Hex.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>

namespace {

TEST(AIFF, opensFormsOfBothKinds) {
    const TemporaryFolder folder;
    ZALData compressed = aiffFile();
    compressed[11] = 'C';
    ZALData other = aiffFile();
    other[8] = 'X';
    for (const auto& [name, content] : {std::pair("Take.AIF", aiffFile()), std::pair("c.aiff", compressed)}) {
        const auto tag = ZALTagAIFF::tagAtPath(folder.write(name, content));
        ASSERT_NE(tag, nullptr) << name;
        EXPECT_FALSE(tag->hasID3v1Tag());
        EXPECT_TRUE(tag->hasID3v2Tag());
        EXPECT_EQ(tag->title(), std::nullopt);
    }
    EXPECT_EQ(ZALTagAIFF::tagAtPath(folder.write("x.aif", other)), nullptr);
    EXPECT_EQ(ZALTagAIFF::tagAtPath(folder.write("cut.aif", bytesOf("FORM"))), nullptr);
    EXPECT_EQ(ZALTagAIFF::tagAtPath(folder.write("song.mp3", aiffFile())), nullptr);
}

TEST(AIFF, savesOnlyItsOwnChunk) {
    const TemporaryFolder folder;
    const ZALData own = iffChunk("APPL", bytesOf("stocodd"));  // odd, so with a pad byte
    const std::string path = folder.write(
        "a.aiff",
        aiffFile({own, iffChunk("ID3 ", id3Tag({id3Text("TIT2", "old"), id3Text("TCON", "(17)")}))}));
    const auto tag = ZALTagAIFF::tagAtPath(path);
    EXPECT_EQ(tag->title(), "old");
    tag->setGrouping("Peak");
    tag->setShouldStripID3v1Tag(true);
    ASSERT_TRUE(tag->save());
    EXPECT_TRUE(tag->requiresSaving()) << "an AIFF save does not clear the mark";
    const ZALData bytes = contentsOf(path);
    const ZALData head = aiffFile({own});
    EXPECT_TRUE(std::equal(head.begin() + 12, head.end(), bytes.begin() + 12)) << "all other chunks stay";
    EXPECT_EQ(ZALTagAIFF::tagAtPath(path)->grouping(), "Peak");
}

TEST(AIFF, damagedChunksAreReadButNotSaved) {
    const TemporaryFolder folder;
    ZALData cut = aiffFile({iffChunk("ID3 ", id3Tag({id3Text("TIT2", "old")}))});
    cut.resize(cut.size() - 20);
    const ZALData torn =
        aiffFile({iffChunk("\1\2\3\4", {}), iffChunk("ID3 ", id3Tag({id3Text("TIT2", "t")}))});
    for (const ZALData& file : {cut, torn}) {
        const std::string path = folder.write("a.aiff", file);
        const auto tag = ZALTagAIFF::tagAtPath(path);
        ASSERT_NE(tag, nullptr);
        tag->setTitle("new");
        const LogCapture log;
        ZALError error;
        EXPECT_FALSE(tag->save(&error));
        EXPECT_EQ(error.code, ZALErrorCode::saveFailed);
        EXPECT_THAT(log.lines(), testing::ElementsAre(testing::HasSubstr("its chunks are damaged at byte")));
        EXPECT_EQ(contentsOf(path), file);
    }
    const std::string path = folder.write("long.aiff", aiffFile());
    std::filesystem::resize_file(path, std::uintmax_t{1} << 32);
    EXPECT_EQ(ZALTagAIFF::tagAtPath(path), nullptr);
}

}  // namespace
