#include <zaltag/id3/ZALTagID3.h>
#include <zaltag/tag/ZALTagDataImage.h>

#include "support/AudioFixtures.h"
#include "support/Hex.h"
#include "support/LogCapture.h"
#include "support/Pictures.h"

#include <attachedpictureframe.h>
#include <gmock/gmock.h>
#include <id3v2tag.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char noPicture[] = "ZALTag: APIC frame ignored after failed cast";
constexpr char notRendered[] = "Unable to finalize the destination PNG data.";

ZALData apic(const ZALData& data, std::uint8_t type = 3, std::string_view mime = "image/jpeg",
             std::uint16_t flags = 0) {
    return id3Frame(
        "APIC",
        joined({ZALData(1), bytesOf(mime), ZALData(1), ZALData(1, type), bytesOf("about"), ZALData(1), data}),
        flags);
}

// TagLib keeps an encrypted frame as it is: an APIC frame that is no picture.
ZALData encrypted() {
    return apic(png(9), 3, "image/png", 0x0004);
}

class Artwork : public testing::Test {
  protected:
    // Opens a fresh file with these frames.
    void open(std::initializer_list<ZALData> frames) {
        path_ = folder_.write("song.mp3", joined({id3Tag(frames), mpegFrames()}));
        tag = ZALTagID3::tagAtPath(path_);
        ASSERT_NE(tag, nullptr);
    }
    void saveAndReopen() {
        ASSERT_TRUE(tag->save());
        tag = ZALTagID3::tagAtPath(path_);
        ASSERT_NE(tag, nullptr);
    }
    // The APIC frames in tag order: mark, MIME type, picture type and description.
    std::string listed() const {
        std::string out;
        for (const TagLib::ID3v2::Frame* frame : tag->v2Tag()->frameList("APIC")) {
            const auto* picture = dynamic_cast<const TagLib::ID3v2::AttachedPictureFrame*>(frame);
            out += out.empty() ? "" : ", ";
            if (picture == nullptr) {
                out += "unreadable";
                continue;
            }
            const TagLib::ByteVector bytes = picture->picture();
            const ZALTagDataImage data({bytes.begin(), bytes.end()});
            out += data.isOriginalImage() ? "original " : data.isCustomImage() ? "custom " : "plain ";
            out += picture->mimeType().to8Bit() + " " + std::to_string(picture->type());
            out += picture->description().isEmpty() ? "" : " " + picture->description().to8Bit();
        }
        return out;
    }

    TemporaryFolder folder_;
    std::string path_;
    std::shared_ptr<ZALTagID3> tag;
};

const ZALImagePtr cover = picture(32, 24, 1);
const ZALImagePtr custom = picture(20, 20, 2);
const ZALImagePtr other = picture(20, 20, 3);
const ZALImagePtr unrenderable = ZALImage::imageWithPixels(1000001, 1, ZALData(4000004));

TEST_F(Artwork, isBackedUpAndRestoredWithoutTouchingAPixelOfTheOriginal) {
    for (const ZALData& data :
         {pngOf(*cover), jpegOf(*cover), jpegOf(*cover, JPEGKind::progressive), webpOf(*cover)}) {
        open({apic(data), apic(png(4), 4, "image/png")});
        const ZALImagePtr original = tag->originalImage();
        ASSERT_NE(original, nullptr);
        EXPECT_EQ(tag->customizedImage(), nullptr);

        for (const ZALImagePtr& image :
             {custom, other}) {  // the second time only the customised one is replaced
            tag->backupOriginalImageAndSetCustomImage(image);
            saveAndReopen();
            EXPECT_EQ(listed(), "custom image/png 0, original image/jpeg 0, plain image/png 0");
            EXPECT_EQ(*tag->primaryImage(), *image);
            EXPECT_EQ(*tag->originalImage(), *original);
        }
        EXPECT_FALSE(tag->replaceOriginalImage(custom)) << "the host's picture is never replaced this way";
        EXPECT_EQ(*tag->customizedImage(), *other);

        tag->restoreOriginalImage();
        saveAndReopen();
        EXPECT_EQ(listed(), "original image/jpeg 0, plain image/png 0");
        EXPECT_FALSE(tag->hasCustomizedImage());
        EXPECT_EQ(*tag->primaryImage(), *original);
        const ZALData kept = tag->allImageData()[0];

        tag->backupOriginalImageAndSetCustomImage(custom);
        EXPECT_EQ(tag->allImageData()[1], kept) << "an original that is marked already";
        EXPECT_EQ(mp3Audio(path_), mpegFrames());
    }
}

TEST_F(Artwork, ofAFileWithoutPictures) {
    open({id3Text("TIT2", "x")});
    EXPECT_FALSE(tag->hasImages());
    EXPECT_EQ(tag->originalImage(), nullptr);
    EXPECT_EQ(tag->primaryImage(), nullptr);
    EXPECT_TRUE(tag->allImages().empty());
    tag->restoreOriginalImage();
    tag->backupOriginalImageAndSetCustomImage(nullptr);
    EXPECT_EQ(listed(), "");
    tag->backupOriginalImageAndSetCustomImage(custom);
    EXPECT_EQ(listed(), "custom image/png 0");
    EXPECT_FALSE(tag->hasOriginalImage());
    EXPECT_EQ(*tag->primaryImage(), *custom);
    tag->restoreOriginalImage();
    EXPECT_FALSE(tag->hasImages());
    EXPECT_TRUE(tag->replacePrimaryImage(custom, false));
    EXPECT_EQ(listed(), "plain image/png 0");
}

TEST_F(Artwork, thatIsReplacedKeepsItsFrame) {
    open({id3Text("TIT2", "x"), apic(png(1), 6), apic(png(2), 4)});
    EXPECT_TRUE(tag->replaceOriginalImage(custom));
    EXPECT_EQ(listed(), "plain image/jpeg 6 about, plain image/jpeg 4 about")
        << "PNG bytes under the old MIME type";
    EXPECT_EQ(*tag->originalImage(), *custom);
    EXPECT_TRUE(tag->replacePrimaryImage(other, true));
    EXPECT_EQ(listed(), "custom image/jpeg 6 about, plain image/jpeg 4 about");
    EXPECT_EQ(tag->originalImage(), nullptr) << "only an unmarked first picture passes for the original";
    EXPECT_TRUE(tag->replacePrimaryImage(nullptr, false));
    EXPECT_FALSE(tag->hasImages());
}

TEST_F(Artwork, isListedAndSet) {
    open({apic(jpegOf(*cover), 3), apic(bytesOf("no picture"), 5), apic(png(2), 4, "image/png")});
    const auto images = tag->allImages();
    ASSERT_EQ(images.size(), 2u) << "one does not decode";
    EXPECT_EQ(images[0].imageType, 3u);
    EXPECT_EQ(images[1].imageType, 4u);
    EXPECT_EQ(tag->allImageData().size(), 3u);
    EXPECT_EQ(tag->allStoredImages()[1].imageType, 5u);
    const LogCapture log;
    tag->setAllImages({{custom, 3}, {nullptr, 3}, {unrenderable, 3}, {other, 3}});
    EXPECT_EQ(listed(), "plain image/png 0, plain image/png 0");
    EXPECT_EQ(*tag->allImages()[1].image, *other);
    EXPECT_THAT(log.lines(),
                ElementsAre("-[ZALTagID3 setAllImages:] unable to finalize the destination PNG data."));
    tag->setAllImages({});
    EXPECT_FALSE(tag->hasImages());
}

TEST_F(Artwork, isCopiedToAnotherTag) {
    open({apic(jpegOf(*cover), 3)});
    const auto copy =
        ZALTagID3::tagAtPath(folder_.write("copy.mp3", joined({id3Tag({apic(png(7))}), mpegFrames()})));
    copy->copyValuesFromTag(*tag);
    ASSERT_EQ(copy->allImages().size(), 1u);
    EXPECT_EQ(*copy->originalImage(), *tag->originalImage());
}

TEST_F(Artwork, thatDoesNotDecodeIsNone) {
    ZALData cut = jpegOf(*cover);
    cut.resize(cut.size() / 2);
    open({apic(cut)});
    EXPECT_TRUE(tag->hasImages());
    EXPECT_FALSE(tag->hasOriginalImage());
    tag->backupOriginalImageAndSetCustomImage(custom);
    EXPECT_EQ(listed(), "custom image/png 0, plain image/jpeg 0")
        << "a damaged picture is kept and not marked";
    EXPECT_EQ(tag->allImageData()[1], cut);
    tag->restoreOriginalImage();
    EXPECT_EQ(tag->allImageData().elements(), std::vector<ZALData>{cut});
    ZALTagDataImage marked(png(1));
    marked.setIsCustomImage(true);
    cut = marked.imageData();
    cut.resize(cut.size() - 20);
    open({apic(cut)});
    EXPECT_FALSE(tag->hasCustomizedImage());
    EXPECT_FALSE(tag->replaceOriginalImage(custom)) << "its mark protects it";
    EXPECT_EQ(listed(), "custom image/jpeg 3 about");
}

TEST_F(Artwork, thatIsTooMuchIsNotListed) {
    ZALData large = png(1);
    const ZALData size = fromHex("00001F40 00001F40");  // 8000 each
    std::copy(size.begin(), size.end(), large.begin() + 16);
    open({apic(png(1)), apic(large), apic(large), apic(large), apic(large), apic(large), apic(png(2))});
    const LogCapture log;
    EXPECT_EQ(tag->allImages().size(), 1u);
    EXPECT_THAT(log.lines(), ElementsAre("pictures beyond 256 mega pixels are left out of the list"));
}

TEST_F(Artwork, thatCannotBeRenderedChangesNothing) {
    open({apic(png(1))});
    const LogCapture log;
    EXPECT_FALSE(tag->replacePrimaryImage(unrenderable, false));
    EXPECT_FALSE(tag->replaceOriginalImage(unrenderable));
    tag->backupOriginalImageAndSetCustomImage(unrenderable);
    EXPECT_EQ(listed(), "plain image/jpeg 3 about");
    EXPECT_THAT(log.lines(), ElementsAre(notRendered, notRendered, notRendered));
}

TEST_F(Artwork, leavesFramesThatAreNoPictures) {
    open({encrypted(), apic(png(1))});
    {
        const LogCapture log;
        EXPECT_TRUE(tag->hasOriginalImage());
        EXPECT_EQ(tag->allImages().size(), 1u);
        EXPECT_THAT(log.lines(), IsEmpty());
        EXPECT_EQ(tag->allImageData().size(), 1u);
        tag->backupOriginalImageAndSetCustomImage(custom);
        EXPECT_EQ(listed(), "unreadable, plain image/jpeg 3 about") << "the first entry cannot be kept";
        tag->restoreOriginalImage();
        EXPECT_EQ(listed(), "unreadable, plain image/jpeg 0");
        EXPECT_THAT(log.lines(), ElementsAre(noPicture, noPicture, noPicture));
    }
    open({apic(png(1)), encrypted(), apic(png(2))});
    {
        const LogCapture log;
        tag->backupOriginalImageAndSetCustomImage(custom);
        EXPECT_EQ(listed(), "unreadable, custom image/png 0, original image/jpeg 0, plain image/jpeg 0");
        EXPECT_THAT(log.lines(), ElementsAre(noPicture));
    }
    open({encrypted()});
    {
        const LogCapture log;
        EXPECT_TRUE(tag->hasImages());
        tag->backupOriginalImageAndSetCustomImage(custom);
        EXPECT_EQ(listed(), "unreadable, custom image/png 0");
        EXPECT_THAT(log.lines(), IsEmpty());
        tag->setAllImages({});
        EXPECT_EQ(listed(), "");
    }
}

}  // namespace
