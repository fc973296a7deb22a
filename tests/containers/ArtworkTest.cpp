// The pictures of MP4 and FLAC, step by step where they differ from those of the ID3 family.

#include <zaltag/containers/ZALTagFLAC.h>
#include <zaltag/containers/ZALTagMP4.h>
#include <zaltag/tag/ZALTagDataImage.h>

#include "base/Endian.h"
#include "support/AudioFixtures.h"
#include "support/ContainerFixtures.h"
#include "support/Hex.h"
#include "support/LogCapture.h"
#include "support/Pictures.h"

#include <flacfile.h>
#include <gmock/gmock.h>
#include <mp4file.h>

#include <algorithm>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const ZALImagePtr custom = picture(20, 20, 2);
const ZALImagePtr other = picture(20, 20, 3);
const ZALImagePtr unrenderable = ZALImage::imageWithPixels(1000001, 1, ZALData(4000004));

std::string markOf(const TagLib::ByteVector& bytes) {
    const ZALTagDataImage data({bytes.begin(), bytes.end()});
    return data.isOriginalImage() ? "original" : data.isCustomImage() ? "custom" : "plain";
}

// A picture marked as original or customised, or neither.
ZALData marked(std::uint8_t seed, std::string_view mark) {
    ZALTagDataImage data(png(seed));
    if (mark == "original") data.setIsOriginalImage(true);
    if (mark == "custom") data.setIsCustomImage(true);
    return data.imageData();
}

std::vector<ZALImagePtr> imagesOf(const ZALTag& tag) {
    std::vector<ZALImagePtr> out;
    for (const ZALTagImageDictionary& dictionary : tag.allImages()) {
        out.push_back(dictionary.image);
    }
    return out;
}

// Compares the pixels of all pictures.
void expectImages(const ZALTag& tag, std::initializer_list<ZALImagePtr> expected) {
    const auto images = imagesOf(tag);
    ASSERT_EQ(images.size(), expected.size());
    std::size_t i = 0;
    for (const ZALImagePtr& image : expected) {
        EXPECT_EQ(*images[i], *image) << "picture " << i;
        ++i;
    }
}

class MP4Artwork : public testing::Test {
  protected:
    // Opens a file with covers of these bytes, called JPEG pictures.
    void open(std::initializer_list<ZALData> covers) {
        const ZALData item = covers.size() > 0 ? mp4Item("covr", covers, 13) : ZALData();
        path_ = folder_.write("song.m4a", mp4File({.userData = mp4Tag({item})}));
        tag = ZALTagMP4::tagAtPath(path_);
        if (tag == nullptr) throw std::runtime_error("does not open");
    }
    // The covers of the saved file: mark and format.
    std::vector<std::string> saved() const {
        EXPECT_TRUE(tag->save());
        TagLib::MP4::File file(path_.c_str(), false);
        std::vector<std::string> out;
        for (const TagLib::MP4::CoverArt& cover : file.tag()->item("covr").toCoverArtList()) {
            out.push_back(markOf(cover.data()) + " " + std::to_string(cover.format()));
        }
        return out;
    }
    bool savedItem() const {
        EXPECT_TRUE(tag->save());
        const ZALData file = contentsOf(path_);
        const std::string_view name = "covr";
        return std::search(file.begin(), file.end(), name.begin(), name.end()) != file.end();
    }

    TemporaryFolder folder_;
    std::string path_;
    std::shared_ptr<ZALTagMP4> tag;
};

TEST_F(MP4Artwork, someOperationsAddAnEmptyItem) {
    const std::tuple<const char*, std::function<void(ZALTagMP4&)>, bool> operations[] = {
        {"original",
         [](ZALTagMP4& t) {
             t.originalImage();
             t.customizedImage();
             t.allStoredImages();
         },
         false},
        {"has", [](ZALTagMP4& t) { t.hasImages(); }, true},
        {"all", [](ZALTagMP4& t) { t.allImages(); }, true},
        {"data", [](ZALTagMP4& t) { t.allImageData(); }, true},
        {"set", [](ZALTagMP4& t) { t.setAllImages({}); }, true},
        {"restore", [](ZALTagMP4& t) { t.restoreOriginalImage(); }, true},
        {"no backup", [](ZALTagMP4& t) { t.backupOriginalImageAndSetCustomImage(nullptr); }, false},
        {"clear", [](ZALTagMP4& t) { EXPECT_TRUE(t.replacePrimaryImage(nullptr, true)); }, false},
    };
    for (const auto& [what, operation, adds] : operations) {
        open({});
        operation(*tag);
        EXPECT_EQ(savedItem(), adds) << what;
        EXPECT_FALSE(tag->hasImages());
    }
}

TEST_F(MP4Artwork, isBackedUpAndRestored) {
    const ZALImagePtr cover = picture(32, 24, 1);
    open({jpegOf(*cover), png(4)});
    const ZALImagePtr original = tag->originalImage();
    const ZALImagePtr second = imagesOf(*tag)[1];
    for (const ZALImagePtr& image : {custom, other}) {
        tag->backupOriginalImageAndSetCustomImage(image);
        EXPECT_THAT(saved(), ElementsAre("custom 14", "original 14", "plain 14")) << "a JPEG is called a PNG";
        expectImages(*tag, {image, original, second});
        EXPECT_EQ(*tag->originalImage(), *original);
    }
    EXPECT_TRUE(tag->replaceOriginalImage(custom)) << "takes the place of the customised one, and is marked";
    EXPECT_THAT(saved(), ElementsAre("custom 14", "original 14", "plain 14"));
    expectImages(*tag, {custom, original, second});
    tag->restoreOriginalImage();
    EXPECT_THAT(saved(), ElementsAre("original 14", "plain 14"));
    expectImages(*tag, {original, second});
    EXPECT_FALSE(tag->hasCustomizedImage());
}

TEST_F(MP4Artwork, ofSeveralOriginalsAllAreRestoredTheLastInFront) {
    open({marked(1, "original"), marked(2, ""), marked(3, "custom"), marked(4, "original")});
    const auto images = imagesOf(*tag);
    EXPECT_EQ(*tag->originalImage(), *images[0]);
    tag->restoreOriginalImage();
    EXPECT_THAT(saved(), ElementsAre("original 14", "original 14", "plain 14"));
    expectImages(*tag, {images[3], images[0], images[1]});
}

TEST_F(MP4Artwork, isReplacedAndSet) {
    open({});
    tag->backupOriginalImageAndSetCustomImage(custom);
    EXPECT_THAT(saved(), ElementsAre("custom 14"));
    EXPECT_FALSE(tag->hasOriginalImage());
    open({png(1), bytesOf("no picture"), png(2)});
    const auto images = imagesOf(*tag);
    ASSERT_EQ(images.size(), 2u) << "one does not decode";
    EXPECT_EQ(tag->allImageData().size(), 3u);
    EXPECT_TRUE(tag->replaceOriginalImage(custom));
    EXPECT_THAT(saved(), ElementsAre("plain 14", "plain 14", "plain 14"));
    expectImages(*tag, {custom, images[1]});
    const LogCapture log;
    EXPECT_FALSE(tag->replacePrimaryImage(unrenderable, true));
    tag->setAllImages({{other, 3}, {unrenderable, 3}, {nullptr, 3}, {custom, 4}});
    EXPECT_THAT(log.lines(),
                ElementsAre("Unable to finalize the destination PNG data.",
                            "-[ZALTagMP4 setAllImages:] unable to finalize the destination PNG data."));
    EXPECT_THAT(saved(), ElementsAre("plain 14", "plain 14"));
    expectImages(*tag, {other, custom});
}

// A picture block.
ZALData block(const ZALData& data, std::uint8_t type, std::string_view mime = "image/jpeg") {
    zal::ByteWriter out;
    out.u32be(type);
    out.u32be(static_cast<std::uint32_t>(mime.size()));
    out.text(mime);
    out.bytes(ZALData(20));
    out.u32be(static_cast<std::uint32_t>(data.size()));
    out.bytes(data);
    return flacBlock(6, out.data());
}

class FLACArtwork : public testing::Test {
  protected:
    void open(std::initializer_list<ZALData> blocks) {
        path_ = folder_.write("song.flac", flacFile(blocks));
        tag = ZALTagFLAC::tagAtPath(path_);
        if (tag == nullptr) throw std::runtime_error("does not open");
    }
    // The pictures of the saved file: mark, MIME type and picture type.
    std::vector<std::string> saved() const {
        EXPECT_TRUE(tag->save());
        TagLib::FLAC::File file(path_.c_str(), false);
        std::vector<std::string> out;
        for (const TagLib::FLAC::Picture* block : file.pictureList()) {
            out.push_back(markOf(block->data()) + " " + block->mimeType().to8Bit() + " " +
                          std::to_string(block->type()));
        }
        return out;
    }

    TemporaryFolder folder_;
    std::string path_;
    std::shared_ptr<ZALTagFLAC> tag;
};

TEST_F(FLACArtwork, isBackedUpAndRestored) {
    open({block(png(1), 6), block(png(4), 4, "image/png"), block(png(5), 5)});
    const auto images = imagesOf(*tag);
    EXPECT_EQ(*tag->originalImage(), *images[2]) << "the last one";
    tag->backupOriginalImageAndSetCustomImage(custom);
    EXPECT_THAT(saved(), ElementsAre("plain image/png 4", "plain image/jpeg 5", "original image/jpeg 0",
                                     "custom image/jpeg 6"));
    expectImages(*tag, {images[1], images[2], custom, custom});
    EXPECT_EQ(*tag->originalImage(), *custom) << "the backup was made after the host's picture was put in";

    tag->backupOriginalImageAndSetCustomImage(other);
    EXPECT_THAT(saved(), ElementsAre("custom image/png 3", "plain image/jpeg 5", "original image/jpeg 0",
                                     "custom image/jpeg 6"))
        << "the second time it goes into the first picture, whichever that is";
    tag->restoreOriginalImage();
    EXPECT_THAT(saved(), ElementsAre("plain image/jpeg 5", "original image/jpeg 3"));
    expectImages(*tag, {images[2], custom});
    EXPECT_FALSE(tag->hasCustomizedImage());
}

TEST_F(FLACArtwork, ofSeveralOriginalsTheLastIsRestored) {
    open({block(marked(1, "original"), 3), block(marked(2, ""), 7), block(marked(3, "custom"), 3),
          block(marked(4, "original"), 9, "image/x")});
    const auto images = imagesOf(*tag);
    EXPECT_EQ(*tag->originalImage(), *images[0]);
    tag->restoreOriginalImage();
    EXPECT_THAT(saved(), ElementsAre("plain image/jpeg 7", "original image/x 3"));
    expectImages(*tag, {images[1], images[3]});
}

TEST_F(FLACArtwork, isReplacedAndSet) {
    open({});
    EXPECT_FALSE(tag->hasImages());
    EXPECT_TRUE(tag->replaceOriginalImage(custom));
    EXPECT_THAT(saved(), ElementsAre("plain image/png 3"));
    EXPECT_TRUE(tag->replacePrimaryImage(nullptr, false));
    tag->backupOriginalImageAndSetCustomImage(custom);
    EXPECT_THAT(saved(), ElementsAre("custom image/png 3"));
    EXPECT_FALSE(tag->hasOriginalImage());

    open({block(png(1), 6), block(bytesOf("no picture"), 4)});
    EXPECT_EQ(tag->allImages().size(), 1u);
    EXPECT_EQ(tag->allImages()[0].imageType, 6u);
    EXPECT_EQ(tag->allImageData().size(), 2u);
    EXPECT_TRUE(tag->replaceOriginalImage(custom));
    EXPECT_THAT(saved(), ElementsAre("plain image/jpeg 3", "plain image/jpeg 4")) << "the MIME type stays";
    EXPECT_TRUE(tag->replacePrimaryImage(other, true));
    EXPECT_TRUE(tag->replaceOriginalImage(custom)) << "takes the place of the customised one, and is marked";
    EXPECT_THAT(saved(), ElementsAre("custom image/jpeg 3", "plain image/jpeg 4"));
    const LogCapture log;
    EXPECT_FALSE(tag->replacePrimaryImage(unrenderable, true));
    tag->setAllImages({{other, 3}, {unrenderable, 3}, {custom, 4}});
    EXPECT_THAT(log.lines(),
                ElementsAre("Unable to finalize the destination PNG data.",
                            "-[ZALTagFLAC setAllImages:] unable to finalize the destination PNG data."));
    EXPECT_THAT(saved(), ElementsAre("plain image/png 0", "plain image/png 0"));
    EXPECT_TRUE(tag->replacePrimaryImage(nullptr, false));
    EXPECT_THAT(saved(), IsEmpty());
}

}  // namespace
