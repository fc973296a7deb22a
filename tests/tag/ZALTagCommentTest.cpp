#include <zaltag/tag/ZALTagComment.h>

#include <gtest/gtest.h>

namespace {

TEST(Comment, keepsTheTextItHadFirst) {
    ZALTagComment comment;
    comment.setComment("first");
    EXPECT_EQ(comment.originalComment(), std::nullopt) << "there was no text before";
    comment.setComment("first");
    EXPECT_EQ(comment.originalComment(), std::nullopt) << "the same text changes nothing";
    comment.setComment("second");
    comment.setComment(std::nullopt);
    EXPECT_TRUE(comment.originalComment() == "first" && comment.comment() == std::nullopt);
}

TEST(Comment, describesItsFields) {
    ZALTagComment comment;
    EXPECT_EQ(comment.description(),
              "ID3 Version: 0\nLanguage: (null)\nComment: (null)\nOriginal Comment: (null)");
    comment.setTagVersion(1);
    comment.setLang("eng");
    comment.setComment("b");
    comment.setOriginalComment("a");
    EXPECT_EQ(comment.description(), "ID3 Version: 1\nLanguage: eng\nComment: b\nOriginal Comment: a");
}

}  // namespace
