#include <zaltag/platform/ZALImage.h>

#include "base/Endian.h"
#include "support/AudioFixtures.h"
#include "support/Hex.h"
#include "support/Pictures.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <chrono>
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

struct Entry {
    std::uint16_t tag;
    std::uint32_t value;  // a short
};

// A TIFF file, little-endian: the strip behind the header, then its directory.
ZALData tiff(std::initializer_list<Entry> entries, const ZALData& strip, std::uint32_t offset = 8) {
    zal::ByteWriter out;
    out.text(std::string_view("II*\0", 4));
    out.u32le(static_cast<std::uint32_t>(8 + strip.size()));
    out.bytes(strip);
    const auto u16 = [&out](std::uint32_t value) {
        out.u8(static_cast<std::uint8_t>(value));
        out.u8(static_cast<std::uint8_t>(value >> 8));
    };
    const auto entry = [&](std::uint16_t tag, std::uint32_t value) {
        u16(tag);
        u16(4);
        out.u32le(1);
        out.u32le(value);
    };
    u16(static_cast<std::uint32_t>(entries.size() + 2));
    for (const Entry& one : entries) {
        entry(one.tag, one.value);
    }
    entry(273, offset);
    entry(279, static_cast<std::uint32_t>(strip.size()));
    out.u32le(0);
    return out.take();
}

TEST(Image, isMadeFromPixelsAndRenderedAsPNG) {
    for (const bool alpha : {false, true}) {
        const ZALImagePtr image = picture(31, 7, 5, alpha);
        const ZALData data = pngOf(*image);
        EXPECT_EQ(data.at(25), alpha ? 6 : 2) << "colour type: an alpha channel only where it is needed";
        const ZALImagePtr decoded = ZALImage::imageWithData(data);
        ASSERT_NE(decoded, nullptr);
        EXPECT_EQ(*decoded, *image);
    }
    EXPECT_FALSE(*picture(16, 12, 1) == *picture(16, 12, 2));
    EXPECT_EQ(ZALImage::imageWithPixels(2, 2, ZALData(15)), nullptr);
    EXPECT_EQ(ZALImage::imageWithPixels(0, 2, {}), nullptr);
    EXPECT_EQ(ZALImage::imageWithPixels(0x40000001, 4, ZALData(16)), nullptr)
        << "the size wraps around in 32 bits";
    EXPECT_EQ(ZALImage::imageWithPixels(1000001, 1, ZALData(4000004))->PNGData(), std::nullopt);
}

TEST(Image, isDecodedUnlessItIsCutOff) {
    const ZALImagePtr image = picture(40, 30);
    const ZALImagePtr clear = picture(40, 30, 0, true);
    struct Case {
        const char* format;
        ZALData data;
        ZALImagePtr expected;
        int tolerance;
    };
    for (const Case& one :
         {Case{"png", pngOf(*clear), clear, 0}, Case{"jpeg", jpegOf(*image), image, 40},
          Case{"jpeg", jpegOf(*image, JPEGKind::progressive), image, 40},
          Case{"webp", webpOf(*clear), clear, 0}, Case{"webp", webpOf(*image, false), image, 80}}) {
        EXPECT_LE(distance(ZALImage::imageWithData(one.data), one.expected), one.tolerance) << one.format;
        const auto info = ZALImage::infoWithData(one.data);
        ASSERT_TRUE(info) << one.format;
        EXPECT_EQ(info->format, one.format);
        EXPECT_EQ(info->width, 40u);
        EXPECT_EQ(info->height, 30u);
        for (const std::size_t length :
             {one.data.size() - 20, one.data.size() / 2, std::size_t{30}, std::size_t{0}}) {
            const ZALDataView cut = ZALDataView(one.data).first(length);
            EXPECT_EQ(ZALImage::imageWithData(cut), nullptr) << one.format << " of " << length << " bytes";
            EXPECT_FALSE(ZALImage::infoWithData(cut)) << one.format << " of " << length << " bytes";
        }
    }
    // A header of 24 bits, two by one pixels, and one row of eight bytes.
    const ZALData bmp = fromHex(
        "424D 3E000000 00000000 36000000 28000000 02000000 01000000 0100 1800 00000000 08000000"
        "00000000 00000000 00000000 00000000 010203 040506 0000");
    ASSERT_NE(ZALImage::imageWithData(bmp), nullptr);
    EXPECT_EQ(toHex(ZALImage::imageWithData(bmp)->pixels()), "03 02 01 FF 06 05 04 FF");
    EXPECT_EQ(ZALImage::imageWithData(ZALDataView(bmp).first(bmp.size() - 1)), nullptr);
}

TEST(Image, readsJPEGsOfGreyAndOfInks) {
    const ZALImagePtr grey = ZALImage::imageWithData(jpegOf(*picture(), JPEGKind::grey));
    ASSERT_NE(grey, nullptr);
    EXPECT_EQ(grey->pixels()[0], grey->pixels()[1]);
    // Cyan, magenta, yellow, key as Adobe's programs store them: inverted.
    const ZALData inks(4 * 64, 0xFF);
    const auto paper =
        ZALImage::imageWithData(jpegOf(*ZALImage::imageWithPixels(8, 8, inks), JPEGKind::cmyk));
    ASSERT_NE(paper, nullptr);
    EXPECT_EQ(paper->pixels(), ZALData(4 * 64, 0xFF)) << "no ink is white";
    // A file without its end mark holds all pixels.
    ZALData open = jpegOf(*picture());
    open.resize(open.size() - 2);
    EXPECT_NE(ZALImage::imageWithData(open), nullptr);
}

TEST(Image, readsTIFFs) {
    constexpr Entry width{256, 3};
    constexpr Entry height{257, 1};
    const ZALData shades = fromHex("102030");
    const ZALData grey = fromHex("101010FF 202020FF 303030FF");
    // The packings are tried on files of another maker by the program's tests; here stands what those do not
    // have.
    const std::tuple<const char*, ZALData, ZALData> cases[] = {
        {"white is zero", tiff({width, height, {258, 8}, {262, 0}}, fromHex("EFDFCF")), grey},
        {"sixteen bits", tiff({width, height, {258, 16}, {262, 1}}, fromHex("FF10 FF20 FF30")), grey},
        {"four bits", tiff({width, height, {258, 4}, {262, 1}}, fromHex("0F30")),
         fromHex("000000FF FFFFFFFF 333333FF")},
        {"runs", tiff({width, height, {258, 8}, {259, 32773}, {262, 1}}, fromHex("80 01 1020 FF 30")), grey},
        {"differences", tiff({width, height, {258, 8}, {262, 1}, {317, 2}}, fromHex("101010")), grey},
        {"differences of sixteen bits",
         tiff({width, height, {258, 16}, {262, 1}, {317, 2}}, fromHex("8010 8010 000F")),
         fromHex("101010FF 212121FF 303030FF")},
    };
    for (const auto& [what, file, pixels] : cases) {
        const ZALImagePtr image = ZALImage::imageWithData(file);
        ASSERT_NE(image, nullptr) << what;
        EXPECT_EQ(toHex(image->pixels()), toHex(pixels)) << what;
    }
    const ZALData refused[] = {
        tiff({width, height, {258, 8}, {262, 1}}, fromHex("1020")),
        tiff({width, height, {258, 8}, {262, 1}}, shades, 0xFFFFFFFF),
        tiff({width, height, {258, 8}, {259, 7}, {262, 1}}, shades),
        tiff({width, height, {258, 8}, {262, 3}}, shades),  // a palette that is not there
        tiff({width, height, {258, 8}, {259, 5}, {262, 1}}, fromHex("80 7F FF FF FF")),
        tiff({width, height, {258, 8}, {259, 32773}, {262, 1}}, fromHex("05 10")),
        tiff({width, {257, 0}, {258, 8}, {262, 1}}, shades),
    };
    for (const ZALData& file : refused) {
        EXPECT_EQ(ZALImage::imageWithData(file), nullptr) << toHex(file);
    }
}

// A PNG that claims a size, with pixels that are all zero.
ZALData emptyPNG(std::uint32_t width, std::uint32_t height) {
    zal::ByteWriter header;
    header.u32be(width);
    header.u32be(height);
    header.bytes(fromHex("01 00 00 00 00"));  // one bit of grey
    const ZALData rows(height * ((std::size_t{width} + 7) / 8 + 1));
    ZALData packed(::compressBound(rows.size()));
    uLongf size = packed.size();
    ::compress(packed.data(), &size, rows.data(), rows.size());
    packed.resize(size);
    return joined({fromHex("89504E470D0A1A0A"), pngChunk("IHDR", header.data()), pngChunk("IDAT", packed),
                   pngChunk("IEND", {})});
}

TEST(Image, isBoundedInSize) {
    ASSERT_NE(ZALImage::imageWithData(emptyPNG(2000, 1000)), nullptr);
    EXPECT_EQ(ZALImage::imageWithData(emptyPNG(65536, 1025)), nullptr);
    EXPECT_FALSE(ZALImage::infoWithData(emptyPNG(65536, 1025)));
}

TEST(Image, bombsCostLittle) {
    const auto start = std::chrono::steady_clock::now();
    // Thousands of texts that would each unpack to megabytes.
    const ZALData zeros(7'000'000);
    ZALData packed(::compressBound(zeros.size()));
    uLongf size = packed.size();
    ::compress(packed.data(), &size, zeros.data(), zeros.size());
    packed.resize(size);
    const ZALData text = pngChunk("zTXt", joined({bytesOf("k"), ZALData(2), packed}));
    ZALData texts;
    for (int i = 0; i < 900; ++i) {
        texts.insert(texts.end(), text.begin(), text.end());
    }
    const ZALData plain = png();
    EXPECT_NE(ZALImage::imageWithData(
                  joined({{plain.begin(), plain.begin() + 33}, texts, {plain.begin() + 33, plain.end()}})),
              nullptr);
    // A JPEG whose last scan comes again and again.
    const ZALData jpeg = jpegOf(*picture(64, 64), JPEGKind::progressive);
    const std::string_view bytes(reinterpret_cast<const char*>(jpeg.data()), jpeg.size());
    const auto scan = static_cast<std::ptrdiff_t>(bytes.rfind("\xFF\xDA"));
    ZALData scans(jpeg.begin(), jpeg.end() - 2);
    for (int i = 0; i < 20000; ++i) {
        scans.insert(scans.end(), jpeg.begin() + scan, jpeg.end() - 2);
    }
    EXPECT_EQ(ZALImage::imageWithData(joined({scans, fromHex("FFD9")})), nullptr);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

}  // namespace
