#include "pictures/LensMake.h"

#include "pictures/Exif.h"
#include "support/AudioFixtures.h"
#include "support/Hex.h"
#include "support/Pictures.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

ZALNullableData marked(const ZALData& picture, const ZALNullableString& make) {
    return zal::pictureWithLensMake(picture, make);
}

// Marks that are set, changed and removed, and pixels that stay, have fuzz targets.
TEST(LensMake, ofWebPMakesAndDropsTheExtendedHeader) {
    for (const bool clear : {false, true}) {
        const ZALData plain = webpOf(*picture(33, 21, 0, clear));
        const ZALNullableData one = marked(plain, "Ünique");
        ASSERT_TRUE(one);
        EXPECT_EQ(zal::lensMakeOf(*one), "Ünique");
        EXPECT_EQ(toHex(ZALDataView(*one).subspan(12, 4)), "56 50 38 58") << "VP8X";
        EXPECT_EQ(one->at(20), clear ? 0x18 : 0x08) << "flags";
        EXPECT_EQ(toHex(ZALDataView(*one).subspan(24, 6)), "20 00 00 14 00 00") << "32 and 20, one less";
        EXPECT_EQ(*ZALImage::imageWithData(*one), *ZALImage::imageWithData(plain));
        EXPECT_EQ(marked(*one, std::nullopt), plain);
    }
}

TEST(LensMake, isPutInAndTakenOutWithoutMovingAnythingElse) {
    for (const ZALData& plain : {joined({withPNGChunk(png(), "tEXt", bytesOf("key\0text")), bytesOf("tail")}),
                                 withJPEGSegment(jpegOf(*picture()), 0xFE, bytesOf("comment"))}) {
        const ZALData one = marked(plain, "Ünique").value();
        const ZALData other = marked(one, "a").value();
        EXPECT_EQ(marked(other, "Ünique"), one) << "changing the mark back and forth adds nothing";
        EXPECT_EQ(marked(other, std::nullopt), plain);
    }
}

// An EXIF block with a first directory (Make, the pointer, a thumbnail directory behind), the EXIF directory
// (its version, a maker note), and values in between. Big- or little-endian.
ZALData exifBlock(bool big) {
    const auto number = [big](std::uint64_t value, std::size_t width) {
        ZALData bytes;
        for (std::size_t i = 0; i < width; ++i) {
            bytes.push_back(static_cast<std::uint8_t>(value >> 8 * (big ? width - 1 - i : i)));
        }
        return bytes;
    };
    const auto entry = [&](std::uint64_t tag, std::uint64_t type, std::uint64_t count, const ZALData& value) {
        return joined({number(tag, 2), number(type, 2), number(count, 4), value});
    };
    return joined(
        {bytesOf(big ? "MM" : "II"), number(42, 2), number(8, 4),
         // at 8: the first directory, the next one at 84
         number(2, 2), entry(0x010F, 2, 6, number(76, 4)), entry(0x8769, 4, 1, number(38, 4)), number(84, 4),
         // at 38
         number(2, 2), entry(0x9000, 7, 4, bytesOf("0232")), entry(0x927C, 7, 8, number(68, 4)), number(0, 4),
         // at 68: a maker note with an offset of its own, then the make
         bytesOf("NOTE"), number(68, 4), bytesOf("Maker"), ZALData(3),
         // at 84: the thumbnail directory
         number(1, 2), entry(0x0103, 3, 1, joined({number(6, 2), ZALData(2)})), number(0, 4)});
}

TEST(LensMake, leavesTheOtherTagsOfAnExifBlockWhereTheyAre) {
    for (const bool big : {true, false}) {
        const ZALData exif = exifBlock(big);
        const ZALData set = zal::exifWithLensMake(exif, "a lens maker");
        EXPECT_EQ(zal::lensMakeOfExif(set), "a lens maker");
        ASSERT_GT(set.size(), exif.size());
        EXPECT_TRUE(std::equal(exif.begin() + 8, exif.end(), set.begin() + 8)) << "nothing moved";
        const ZALData changed = zal::exifWithLensMake(set, "another lens maker");
        EXPECT_EQ(changed.size(), set.size() + 6) << "the last change is written over";
        const ZALData removed = zal::exifWithLensMake(changed, std::nullopt);
        EXPECT_EQ(zal::lensMakeOfExif(removed), std::nullopt);
        EXPECT_TRUE(std::equal(exif.begin() + 8, exif.end(), removed.begin() + 8));

        const ZALData plain = withPNGChunk(png(), "eXIf", exif);
        EXPECT_EQ(marked(plain, "a lens maker")->size() - plain.size(), set.size() - exif.size())
            << "in its place";
    }
    EXPECT_EQ(zal::lensMakeOf(*marked(withPNGChunk(png(), "eXIf", bytesOf("junk")), "make")), "make")
        << "a block that nobody can read gives way";
}

TEST(LensMake, isRefusedForWhatCannotBeReadAsAWhole) {
    const ZALData jpeg = jpegOf(*picture(64, 64));
    ZALData wrongSum = png();
    wrongSum[wrongSum.size() - 14] ^= 1;  // the check sum of the pixels
    const ZALData cutPNG(wrongSum.begin(), wrongSum.end() - 12);
    const ZALData full = withJPEGSegment(
        jpeg, 0xE1, joined({bytesOf(std::string_view("Exif\0\0", 6)), exifBlock(true), ZALData(65400)}));
    EXPECT_NE(ZALImage::imageWithData(full), nullptr);
    const std::pair<const char*, ZALData> pictures[] = {
        {"cut off", ZALData(jpeg.begin(), jpeg.begin() + std::ssize(jpeg) / 2)},
        {"wrong check sum", wrongSum},
        {"no end", cutPNG},
        {"no room left in the segment", full},
        {"a format without marks", fromHex("49492A0008000000 0000 00000000")},
        {"nothing", {}},
    };
    for (const auto& [what, data] : pictures) {
        EXPECT_EQ(marked(data, "make"), std::nullopt) << what;
        EXPECT_EQ(zal::lensMakeOf(data), std::nullopt) << what;
    }
    EXPECT_EQ(marked(png(), std::string("a\0b", 3)), std::nullopt) << "a text that would not come back";
}

}  // namespace
