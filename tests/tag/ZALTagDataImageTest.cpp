#include <zaltag/tag/ZALTagDataImage.h>

#include "support/Pictures.h"

#include <gtest/gtest.h>

namespace {

TEST(DataImage, isMarkedAndUnmarked) {
    EXPECT_EQ(ZALTagDataImage::originalLensMakeString(), "__zal_original_album_artwork__");
    EXPECT_EQ(ZALTagDataImage::customizedLensMakeString(), "__zal_customized_album_artwork__");
    const ZALData plain = png();
    auto image = ZALTagDataImage::dataImageWithImageData(plain);
    EXPECT_FALSE(image.isOriginalImage() || image.isCustomImage());
    image.setIsOriginalImage(false);
    EXPECT_EQ(image.imageData(), plain);
    image.setIsOriginalImage(true);
    EXPECT_EQ(image.lensMake(), "__zal_original_album_artwork__");
    image.setIsCustomImage(false);
    EXPECT_TRUE(image.isOriginalImage()) << "it was not customised";
    image.setIsCustomImage(true);
    EXPECT_EQ(image.lensMake(), "__zal_customized_album_artwork__");
    EXPECT_FALSE(image.isOriginalImage());
    image.setIsCustomImage(false);
    EXPECT_EQ(image.imageData(), plain);
}

}  // namespace
