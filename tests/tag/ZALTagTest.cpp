#include <zaltag/base/ZALProgrammingError.h>
#include <zaltag/id3/ZALTagID3.h>
#include <zaltag/tag/ZALTag.h>
#include <zaltag/tag/ZALTagComment.h>

#include "support/AudioFixtures.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>

#include <map>

namespace {

using testing::ElementsAre;

// A back-end that implements only what the test sets.
class Plain : public ZALTag {
  public:
    bool supportsImages() const override { return false; }
    ZALJSONValue valueForKey(const std::string& key) const override { return values.at(key); }
    void setValue(const ZALJSONValue& value, const std::string& key) override { values[key] = value; }
    std::map<std::string, ZALJSONValue> values;
};

TEST(Factory, goesByTheExtensionAlone) {
    for (const char* path : {"track.ogg", "track", ".mp3", "mp3", "x.mp3/y", "track.mp3.", ""}) {
        EXPECT_FALSE(ZALTag::canInitWithPath(path) || ZALTag::tagAtPath(path) != nullptr) << path;
    }
    EXPECT_EQ(ZALTag::tagAtPath(std::nullopt), nullptr);
    const TemporaryFolder folder;
    const std::string path = folder.write("a.b.mP3", mpegFrames());
    const auto tag = ZALTag::initWithPath(path);
    ASSERT_NE(std::dynamic_pointer_cast<ZALTagID3>(tag), nullptr);
    EXPECT_TRUE(ZALTag::canInitWithPath(path) && tag->path() == path && !tag->readOnly());
    EXPECT_TRUE(ZALTag::tagAtPath(path, true)->readOnly());
}

TEST(Base, abstractOperationsNameThemselves) {
    EXPECT_THAT([] { Plain().setArtist("x"); },
                testing::ThrowsMessage<ZALProgrammingError>(
                    "-[ZALTag setArtist:] is abstract implement it in your subclass!"));
    EXPECT_THROW(ZALTagID3::initWithPath("a.mp3"), ZALProgrammingError) << "the factory is ZALTag's";
}

TEST(Comment, keepsTheTextItHadFirst) {
    ZALTagComment comment;
    comment.setComment("first");
    comment.setComment("first");
    EXPECT_EQ(comment.originalComment(), std::nullopt) << "there was no text before";
    comment.setComment("second");
    comment.setComment(std::nullopt);
    EXPECT_EQ(comment.description(),
              "ID3 Version: 0\nLanguage: (null)\nComment: (null)\nOriginal Comment: first");
}

TEST(Base, copiesTheSevenStandardValues) {
    EXPECT_THAT(ZALTag::standardPropertyKeys().elements(),
                ElementsAre("artist", "album", "year", "title", "comment", "tempo", "initialKey"));
    Plain from, to;
    for (const std::string& key : from.propertyKeys()) {
        from.values[key] = key;
        to.values[key] = "old";
    }
    from.values["title"] = nullptr;
    to.copyValuesFromTag(from);
    EXPECT_EQ(to.values["artist"], ZALJSONValue("artist"));
    EXPECT_TRUE(to.values["title"].isNull());
    for (const char* key : {"genre", "grouping", "energyLevel", "modifiedBy"}) {
        EXPECT_EQ(to.values[key], ZALJSONValue("old")) << key;
    }
}

}  // namespace
