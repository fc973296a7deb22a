#include "tag/ArtworkPlan.h"

#include <gtest/gtest.h>

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
