#include "tag/ArtworkPlan.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

// Marks from letters: "o" original, "c" customised, anything else none.
std::vector<zal::ArtworkMark> marks(std::string_view letters) {
    std::vector<zal::ArtworkMark> out;
    for (const char letter : letters) {
        out.push_back(letter == 'o'   ? zal::ArtworkMark::original
                      : letter == 'c' ? zal::ArtworkMark::customized
                                      : zal::ArtworkMark::none);
    }
    return out;
}

// A plan in words: each picture's source ("new" for none), "c" when it holds the host's picture, "o" when it
// is marked as original, and its type.
std::string described(const zal::ArtworkPlan& plan) {
    std::string out;
    for (const zal::PlannedPicture& picture : plan) {
        out += out.empty() ? "" : " ";
        out += picture.source ? std::to_string(*picture.source) : "new";
        out += picture.customized ? "c" : "";
        out += picture.original ? "o" : "";
        out += picture.type ? fmt::format("/{}", *picture.type) : "/own";
    }
    return out;
}

TEST(ArtworkPlan, ofEveryContainer) {
    struct Case {
        const zal::ArtworkRules& rules;
        const char* backupOfNone;
        const char* backupOfThree;
        const char* restored;  // from unmarked, original, customised, unmarked, original
    };
    const Case cases[] = {
        {zal::id3Artwork, "newc/0", "newc/0 0o/0 1/0 2/0", "4/0 0/0 3/0"},
        {zal::mp4Artwork, "newc/0", "newc/0 0o/0 1/0 2/0", "4/0 1/0 0/0 3/0"},
        {zal::flacArtwork, "newc/3", "1/own 2/own 0co/0 0c/own", "0/own 3/own 4/3"},
    };
    for (const Case& one : cases) {
        EXPECT_EQ(described(zal::backupPlan(one.rules, 0)), one.backupOfNone) << one.rules.setAllImagesName;
        EXPECT_EQ(described(zal::backupPlan(one.rules, 3)), one.backupOfThree) << one.rules.setAllImagesName;
        EXPECT_EQ(described(zal::restorePlan(one.rules, marks("-oc-o"))), one.restored)
            << one.rules.setAllImagesName;
        EXPECT_EQ(described(zal::restorePlan(one.rules, marks("c"))), "");
    }
}

TEST(ArtworkPlan, tellsTheOriginal) {
    constexpr int none = -1;
    struct Case {
        const char* marks;
        int first;  // where an unmarked original stands first
        int last;
    };
    for (const Case& one : {Case{"", none, none}, Case{"--", 0, 1}, Case{"-o-o", 1, 1}, Case{"c-", none, 1},
                            Case{"-c", 0, none}, Case{"c", none, none}, Case{"co", 1, 1}}) {
        const auto stored = marks(one.marks);
        const auto index = [](std::optional<std::size_t> found) {
            return found ? static_cast<int>(*found) : none;
        };
        EXPECT_EQ(index(zal::originalPicture(zal::id3Artwork, stored)), one.first) << one.marks;
        EXPECT_EQ(index(zal::originalPicture(zal::flacArtwork, stored)), one.last) << one.marks;
    }
    EXPECT_EQ(zal::customizedPicture(marks("-occ")), 2u);
    EXPECT_EQ(zal::customizedPicture(marks("-o")), std::nullopt);
}

}  // namespace
