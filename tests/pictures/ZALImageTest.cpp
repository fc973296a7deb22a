#include <zaltag/pictures/ZALImage.h>

#include "base/Endian.h"
#include "support/AudioFixtures.h"
#include "support/Hex.h"
#include "support/Pictures.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

// The largest difference of two pictures of the same size in any byte; 255 when the sizes differ.
int distance(const ZALImagePtr& a, const ZALImagePtr& b) {
    if (a == nullptr || b == nullptr || a->width() != b->width() || a->height() != b->height()) return 255;
    int most = 0;
    for (std::size_t i = 0; i < a->pixels().size(); ++i) {
        most = std::max(most, std::abs(a->pixels()[i] - b->pixels()[i]));
    }
    return most;
}

TEST(Image, isMadeFromPixelsAndRenderedAsPNG) {
    for (const bool alpha : {false, true}) {
        const ZALImagePtr image = picture(31, 7, 5, alpha);
        const ZALData data = pngOf(*image);
        EXPECT_EQ(data.at(25), alpha ? 6 : 2) << "colour type: an alpha channel only where it is needed";
        EXPECT_EQ(distance(ZALImage::imageWithData(data), image), 0);
    }
    EXPECT_FALSE(ZALImage::imageWithPixels(2, 2, ZALData(15)) || ZALImage::imageWithPixels(0, 2, {}) ||
                 ZALImage::imageWithPixels(0x40000001, 4, ZALData(16)))
        << "the last size wraps around in 32 bits";
    EXPECT_EQ(ZALImage::imageWithPixels(1000001, 1, ZALData(4000004))->PNGData(), std::nullopt);
}

TEST(Image, isDecodedUnlessItIsCutOff) {
    const ZALImagePtr image = picture(40, 30), clear = picture(40, 30, 0, true);
    const std::tuple<const char*, ZALData, ZALImagePtr, int> rows[] = {
        {"png", pngOf(*clear), clear, 0},
        {"jpeg", jpegOf(*image), image, 40},
        {"jpeg", jpegOf(*image, JPEGKind::progressive), image, 40},
        {"webp", webpOf(*clear), clear, 0},
    };
    for (const auto& [format, data, expected, tolerance] : rows) {
        EXPECT_LE(distance(ZALImage::imageWithData(data), expected), tolerance) << format;
        const auto info = ZALImage::infoWithData(data);
        EXPECT_TRUE(info && info->format == format && info->width == 40 && info->height == 30) << format;
        for (const std::size_t length : {data.size() - 20, data.size() / 2, std::size_t{30}}) {
            const ZALDataView cut = ZALDataView(data).first(length);
            EXPECT_FALSE(ZALImage::imageWithData(cut) || ZALImage::infoWithData(cut)) << format << length;
        }
    }
}

TEST(Image, readsJPEGsOfGreyAndOfInks) {
    const ZALImagePtr grey = ZALImage::imageWithData(jpegOf(*picture(), JPEGKind::grey));
    EXPECT_TRUE(grey != nullptr && grey->pixels()[0] == grey->pixels()[1]);
    // Cyan, magenta, yellow, key as Adobe's programs store them: inverted, so that no ink is white.
    const ZALImagePtr white = ZALImage::imageWithPixels(8, 8, ZALData(4 * 64, 0xFF));
    EXPECT_EQ(distance(ZALImage::imageWithData(jpegOf(*white, JPEGKind::cmyk)), white), 0);
    ZALData open = jpegOf(*picture());
    open.resize(open.size() - 2);
    EXPECT_NE(ZALImage::imageWithData(open), nullptr) << "without its end mark it holds all pixels";
}

TEST(Image, isBoundedInPixelsAndInScans) {
    const auto claiming = [](std::uint32_t width, std::uint32_t height) {
        zal::ByteWriter header;
        header.u32be(width);
        header.u32be(height);
        header.bytes(fromHex("01 00 00 00 00"));  // one bit of grey
        return joined({fromHex("89504E470D0A1A0A"), pngChunk("IHDR", header.data()), pngChunk("IDAT", {}),
                       pngChunk("IEND", {})});
    };
    EXPECT_TRUE(ZALImage::infoWithData(claiming(2000, 1000)));
    EXPECT_FALSE(ZALImage::infoWithData(claiming(65536, 1025)));
    // A JPEG whose last scan comes again and again.
    const ZALData jpeg = jpegOf(*picture(64, 64), JPEGKind::progressive);
    const std::string_view bytes(reinterpret_cast<const char*>(jpeg.data()), jpeg.size());
    const auto scan = static_cast<std::ptrdiff_t>(bytes.rfind("\xFF\xDA"));
    ZALData scans(jpeg.begin(), jpeg.end() - 2);
    for (int i = 0; i < 100; ++i) {
        scans.insert(scans.end(), jpeg.begin() + scan, jpeg.end() - 2);
    }
    EXPECT_EQ(ZALImage::imageWithData(joined({scans, fromHex("FFD9")})), nullptr);
}

}  // namespace
