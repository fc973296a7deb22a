#include <zaltag/id3/ZALTagID3.h>
#include <zaltag/tag/ZALTagComment.h>

#include "support/AudioFixtures.h"
#include "support/Hex.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

std::shared_ptr<ZALTagID3> tagWith(const ZALData& tag, const ZALData& v1 = {}) {
    static const TemporaryFolder folder;
    return ZALTagID3::tagAtPath(folder.write("song.mp3", joined({tag, mpegFrames(), v1})));
}

// A comment in one line: text, language, version, and marks for primary and for matching the ID3v1 comment.
std::vector<std::string> listed(const ZALTagID3& tag) {
    std::vector<std::string> out;
    for (const ZALTagComment& comment : tag.allComments()) {
        EXPECT_EQ(comment.comment(), comment.originalComment());
        out.push_back(*comment.comment() + "/" + comment.lang().value_or("-") + "/" +
                      std::to_string(comment.tagVersion()) + (comment.isPrimary() ? " primary" : "") +
                      (comment.v1CommentMatchesv2Comment() ? " v1" : ""));
    }
    return out;
}

TEST(AllComments, listsFramesInTheirOrder) {
    const LogCapture log;
    const auto tag = tagWith(
        id3Tag({id3Comment("eng", "iTunNORM", "no"), id3Comment("eng", "my iTunes", "no"),
                id3Comment("und", "", "note"), id3Comment("eng", "x", "same"), id3Comment("deu", "", "same"),
                id3Comment("eng", "", ""), id3Comment("eng", "", "same")}));
    EXPECT_THAT(listed(*tag),
                ElementsAre("note/und/1", "same/eng/1 primary", "same/deu/1", "same/eng/1 primary"))
        << "language and text make a copy of the primary comment, the description does not matter";
    EXPECT_THAT(log.lines(), ElementsAre("ZALTag: Comment has no contents"));
}

TEST(AllComments, theID3v1CommentIsListedUnlessOneEqualsIt) {
    const std::string forty = "1234567890123456789012345678901234567890";
    const std::string accents = "éééééééééééééééééééééééééé";  // 26 characters, 52 bytes
    const std::tuple<ZALData, std::string, std::vector<std::string>> cases[] = {
        {id3Tag({}), "", {"/-/0"}},
        {id3Tag({id3Comment("eng", "", "a")}), "b", {"a/eng/1 primary", "b/-/0"}},
        {id3Tag({id3Comment("eng", "", "a")}), "a", {"a/eng/1 primary v1"}},
        {id3Tag({id3Comment("eng", "", forty)}), forty.substr(0, 25), {forty + "/eng/1 primary v1"}},
        {id3Tag({id3Comment("eng", "", forty.substr(0, 25))}),
         forty.substr(0, 26),
         {forty.substr(0, 25) + "/eng/1 primary v1"}},
        {id3Tag({id3Comment("eng", "", forty)}),
         forty.substr(0, 24),
         {forty + "/eng/1 primary", forty.substr(0, 24) + "/-/0"}},
        {id3Tag({id3Frame("COMM", joined({bytesOf(std::string("\3eng\0", 5)), bytesOf(accents)}))}),
         std::string(25, '\xE9'),
         {accents + "/eng/1 primary v1"}},
    };
    for (const auto& [tag, v1, expected] : cases) {
        EXPECT_EQ(listed(*tagWith(tag, id3v1Tag("title", "", v1))), expected) << v1;
    }
}

}  // namespace
