#include <zaltag/id3/ZALTagAIFF.h>

#include "support/AudioFixtures.h"
#include "support/Hex.h"

#include <gtest/gtest.h>

namespace {

// Which files open and save is in the hostile set.
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

}  // namespace
