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
