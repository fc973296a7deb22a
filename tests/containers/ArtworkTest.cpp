// The pictures of ID3, MP4 and FLAC, step by step.

#include <zaltag/tag/ZALTag.h>
#include <zaltag/tag/ZALTagDataImage.h>

#include "base/Endian.h"
#include "support/AudioFixtures.h"
#include "support/ContainerFixtures.h"
#include "support/Hex.h"
#include "support/LogCapture.h"
#include "support/Pictures.h"

#include <attachedpictureframe.h>
#include <flacfile.h>
#include <gmock/gmock.h>
#include <id3v2tag.h>
#include <mp4file.h>
#include <mpegfile.h>

#include <algorithm>

namespace {

using Operation = std::function<void(ZALTag&)>;

const ZALImagePtr unrenderable = ZALImage::imageWithPixels(1000001, 1, ZALData(4000004));

ZALImagePtr image(std::uint8_t seed) {
    return seed != 0 ? picture(16, 12, seed) : nullptr;
}

// Which of the test's pictures it is, by its pixels; "o" or "c" for its mark; what the container says of it.
std::string described(const TagLib::ByteVector& bytes, const std::string& kind) {
    const ZALTagDataImage data({bytes.begin(), bytes.end()});
    const ZALImagePtr decoded = ZALImage::imageWithData(data.imageData());
    std::string out = "?";
    for (std::uint8_t seed = 1; decoded != nullptr && seed < 10; ++seed) {
        if (*decoded == *image(seed)) out = std::to_string(seed);
    }
    return out + (data.isOriginalImage() ? "o" : data.isCustomImage() ? "c" : "") + " " + kind;
}

// The picture of a number with the mark "o" or "c", or none.
ZALData marked(std::uint8_t seed, char mark) {
    ZALTagDataImage data(pngOf(*image(seed)));
    if (mark == 'o') data.setIsOriginalImage(true);
    if (mark == 'c') data.setIsCustomImage(true);
    return data.imageData();
}

ZALData block(const ZALData& data, std::uint8_t type, std::string_view mime) {
    zal::ByteWriter out;
    out.u32be(type);
    out.u32be(static_cast<std::uint32_t>(mime.size()));
    out.text(mime);
    out.bytes(ZALData(20));
    out.u32be(static_cast<std::uint32_t>(data.size()));
    out.bytes(data);
    return flacBlock(6, out.data());
}

ZALData apic(const ZALData& data, std::uint8_t type, std::uint16_t flags = 0) {
    const ZALData mimeType = bytesOf(std::string_view("\0image/jpeg\0", 12));
    return id3Frame("APIC", joined({mimeType, {type}, bytesOf("about"), {0}, data}), flags);
}

// Without the last bytes, so that it does not decode; its mark is still there.
ZALData cut(ZALData data) {
    data.resize(data.size() - 20);
    return data;
}

class ContainerArtwork : public testing::Test {
  protected:
    void open(const std::string& name, const ZALData& file) {
        path_ = folder_.write(name, file);
        tag = ZALTag::tagAtPath(path_);
        if (tag == nullptr) throw std::runtime_error("does not open");
    }
    void openMP3(std::initializer_list<ZALData> frames) {
        open("a.mp3", joined({id3Tag(frames), mpegFrames()}));
    }
    void openMP4(const std::vector<ZALData>& covers) {
        open("a.m4a", mp4File({.userData = mp4Tag({mp4Item("covr", covers, 14)})}));
    }
    // The pictures of the saved file.
    std::vector<std::string> saved() const {
        EXPECT_TRUE(tag->save());
        std::vector<std::string> out;
        if (path_.ends_with("flac")) {
            TagLib::FLAC::File file(path_.c_str(), false);
            for (const auto* picture : file.pictureList()) {
                const std::string kind = picture->mimeType().to8Bit() + " " + std::to_string(picture->type());
                out.push_back(described(picture->data(), kind));
            }
            return out;
        }
        if (path_.ends_with("mp3")) {
            TagLib::MPEG::File file(path_.c_str(), false);
            for (const auto* frame : file.ID3v2Tag()->frameList("APIC")) {
                const auto* shown = dynamic_cast<const TagLib::ID3v2::AttachedPictureFrame*>(frame);
                if (shown == nullptr) out.emplace_back("unread");
                if (shown == nullptr) continue;
                const auto& picture = *shown;
                out.push_back(described(picture.picture(), picture.mimeType().to8Bit() + " " +
                                                               std::to_string(picture.type()) + " " +
                                                               picture.description().to8Bit()));
            }
            return out;
        }
        TagLib::MP4::File file(path_.c_str(), false);
        for (const auto& cover : file.tag()->item("covr").toCoverArtList()) {
            out.push_back(described(cover.data(), std::to_string(cover.format())));
        }
        return out;
    }
    void expectSteps(std::initializer_list<std::pair<Operation, std::vector<std::string>>> steps) {
        int step = 0;
        for (const auto& [operation, expected] : steps) {
            operation(*tag);
            EXPECT_EQ(saved(), expected) << "step " << ++step;
        }
    }

    TemporaryFolder folder_;
    std::string path_;
    std::shared_ptr<ZALTag> tag;
};

Operation backup(std::uint8_t seed) {
    return [seed](ZALTag& tag) { tag.backupOriginalImageAndSetCustomImage(image(seed)); };
}
Operation replace(std::uint8_t seed) {
    return [seed](ZALTag& tag) { EXPECT_TRUE(tag.replaceOriginalImage(image(seed))); };
}
Operation mark(std::uint8_t seed) {
    return [seed](ZALTag& tag) { EXPECT_TRUE(tag.replacePrimaryImage(image(seed), true)); };
}
Operation setAll(std::uint8_t first, std::uint8_t second) {
    return [=](ZALTag& tag) { tag.setAllImages({{image(first), 3}, {nullptr, 3}, {image(second), 4}}); };
}
void restore(ZALTag& tag) {
    tag.restoreOriginalImage();
}
void clear(ZALTag& tag) {
    EXPECT_TRUE(tag.replacePrimaryImage(nullptr, false));
}
void refuse(ZALTag& tag) {
    EXPECT_FALSE(tag.replaceOriginalImage(image(9)));
}

TEST_F(ContainerArtwork, inID3WhatIsMadeAnewHasNeitherTypeNorDescription) {
    openMP3({apic(marked(1, ' '), 6), apic(marked(2, ' '), 4)});
    EXPECT_EQ(tag->allImages()[0].imageType, 6u);
    expectSteps({{replace(3), {"3 image/jpeg 6 about", "2 image/jpeg 4 about"}},
                 {backup(4), {"4c image/png 0 ", "3o image/jpeg 0 ", "2 image/jpeg 0 "}},
                 {backup(5), {"5c image/png 0 ", "3o image/jpeg 0 ", "2 image/jpeg 0 "}},
                 {refuse, {"5c image/png 0 ", "3o image/jpeg 0 ", "2 image/jpeg 0 "}},
                 {restore, {"3o image/jpeg 0 ", "2 image/jpeg 0 "}},
                 {setAll(6, 7), {"6 image/png 0 ", "7 image/png 0 "}},
                 {clear, {}},
                 {backup(3), {"3c image/png 0 "}}});
    openMP3({apic(cut(marked(1, 'c')), 3)});
    EXPECT_FALSE(tag->hasCustomizedImage());
    expectSteps({{refuse, {"?c image/jpeg 3 about"}}});  // its mark protects it
    const auto copy = ZALTag::tagAtPath(folder_.write("copy.mp3", mpegFrames()));
    openMP3({apic(marked(1, ' '), 3)});
    copy->copyValuesFromTag(*tag);
    EXPECT_EQ(*copy->originalImage(), *image(1));
}

TEST_F(ContainerArtwork, inID3FramesThatAreNoPicturesStay) {
    const ZALData encrypted = apic(marked(9, ' '), 3, 0x0004);
    const LogCapture log;
    openMP3({encrypted, apic(marked(1, ' '), 3)});
    EXPECT_TRUE(tag->hasOriginalImage());
    EXPECT_EQ(tag->allImages().size(), 1u);
    EXPECT_THAT(log.lines(), testing::IsEmpty());
    expectSteps({{backup(3), {"unread", "1 image/jpeg 3 about"}},  // the first entry cannot be kept
                 {restore, {"unread", "1 image/jpeg 3 about"}},
                 {setAll(0, 0), {}}});
    EXPECT_THAT(log.lines(), testing::Each("ZALTag: APIC frame ignored after failed cast"));
    EXPECT_EQ(log.lines().size(), 2u);
}

TEST_F(ContainerArtwork, inMP4EveryCoverIsCalledAPNG) {
    openMP4({marked(1, ' '), marked(2, ' '), bytesOf("x")});
    EXPECT_EQ(tag->allImages().size(), 2u) << "one does not decode";
    expectSteps({{backup(3), {"3c 14", "1o 14", "2 14", "? 14"}},
                 {replace(5), {"5c 14", "1o 14", "2 14", "? 14"}},  // takes the customised one's place
                 {restore, {"1o 14", "2 14", "? 14"}},
                 {setAll(6, 7), {"6 14", "7 14"}},
                 {replace(8), {"8 14", "7 14"}},
                 {mark(9), {"9c 14", "7 14"}},
                 {replace(0), {}}});
    openMP4({cut(marked(3, 'c')), marked(1, 'o')});
    expectSteps({{replace(5), {"5 14", "1o 14"}}});  // one that does not decode is no customised one
}

TEST_F(ContainerArtwork, inMP4NoOperationWritesAnEmptyItem) {
    const Operation operations[] = {
        [](ZALTag& t) { EXPECT_FALSE(t.hasOriginalImage() || !t.allStoredImages().empty()); },
        [](ZALTag& t) { EXPECT_FALSE(t.hasImages()); },
        [](ZALTag& t) { t.setAllImages({}); },
        restore,
        backup(0),
        [](ZALTag& t) { EXPECT_FALSE(t.replaceOriginalImage(unrenderable)); },
    };
    const LogCapture log;
    for (const Operation& operation : operations) {
        open("a.m4a", mp4File());
        operation(*tag);
        EXPECT_TRUE(tag->save());
        EXPECT_EQ(contentsOf(path_), mp4File());
    }
}

TEST_F(ContainerArtwork, inFLACTheOriginalIsLast) {
    open("a.flac", flacFile({block(marked(1, ' '), 6, "image/jpeg"), block(marked(2, ' '), 4, "image/png"),
                             block(marked(3, ' '), 5, "image/jpeg")}));
    EXPECT_EQ(*tag->originalImage(), *image(3));
    expectSteps({{restore, {"1 image/jpeg 6", "2 image/png 4", "3 image/jpeg 5"}},  // nothing is marked
                 {backup(4), {"2 image/png 4", "3 image/jpeg 5", "1o image/jpeg 0", "4c image/png 3"}},
                 {backup(5), {"2 image/png 4", "3 image/jpeg 5", "1o image/jpeg 0", "5c image/png 3"}},
                 {replace(6), {"6c image/png 3", "3 image/jpeg 5", "1o image/jpeg 0", "5c image/png 3"}},
                 {restore, {"3 image/jpeg 5", "1o image/jpeg 3"}},
                 {setAll(6, 7), {"6 image/png 0", "7 image/png 0"}},
                 {replace(0), {}},
                 {backup(3), {"3c image/png 3"}}});
}

TEST_F(ContainerArtwork, thatCannotBeRenderedChangesNothing) {
    const std::tuple<const char*, const char*, ZALData> formats[] = {
        {"a.mp3", "ID3", joined({id3Tag({apic(marked(1, ' '), 3)}), mpegFrames()})},
        {"a.m4a", "MP4", mp4File({.userData = mp4Tag({mp4Item("covr", {marked(1, ' ')}, 13)})})},
        {"a.flac", "FLAC", flacFile({block(marked(1, ' '), 6, "a")})},
    };
    for (const auto& [file, name, content] : formats) {
        open(file, content);
        const auto before = saved();
        const LogCapture log;
        EXPECT_FALSE(tag->replacePrimaryImage(unrenderable, true) || tag->replaceOriginalImage(unrenderable));
        tag->backupOriginalImageAndSetCustomImage(unrenderable);
        EXPECT_EQ(saved(), before);
        tag->setAllImages({{unrenderable, 3}});
        const std::string line = "Unable to finalize the destination PNG data.";
        const std::string last = std::string("-[ZALTag") + name + " setAllImages:] unable to finalize the ";
        EXPECT_THAT(log.lines(), testing::ElementsAre(line, line, line, last + "destination PNG data."));
        EXPECT_FALSE(tag->hasImages());
    }
}

}  // namespace
