#include "stores/TagStore.h"

#include "tag/TagContents.h"

#include <zaltag/tag/ZALTag.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <map>

namespace {

using zal::Carrier;
using zal::NumberField;
using zal::TextField;
using Lines = std::map<std::string, std::string>;

// A store of lines "NAME=text". A new kind of tag takes this class and this table.
class TextFile final : public zal::TagStore {
  public:
    explicit TextFile(Lines& lines) : lines_(lines) {}

    ZALNullableString text(TextField field) const override { return line(nameOf(field)); }
    void setText(TextField field, const ZALNullableString& text) override { setLine(nameOf(field), text); }
    std::int64_t number(NumberField field) const override {
        return field == NumberField::tempo ? std::stoll(line("TEMPO").value_or("0")) : 0;
    }
    void setNumber(NumberField field, std::int64_t number) override {
        if (field == NumberField::tempo) setLine("TEMPO", std::to_string(number));
    }
    bool carries(const Carrier&) const override { return true; }
    ZALNullableData payload(const Carrier& carrier) const override {
        const ZALNullableString text = line(carrier.object);
        return text ? ZALNullableData(ZALData(text->begin(), text->end())) : std::nullopt;
    }
    void setPayload(const Carrier& carrier, const ZALNullableData& payload) override {
        setLine(carrier.object,
                payload ? ZALNullableString({payload->begin(), payload->end()}) : std::nullopt);
    }

  private:
    static const char* nameOf(TextField field) {
        static const std::map<TextField, const char*> names{{TextField::title, "TITLE"},
                                                            {TextField::artist, "ARTIST"}};
        const auto found = names.find(field);
        return found != names.end() ? found->second : nullptr;
    }
    ZALNullableString line(const char* name) const {
        const auto found = name != nullptr ? lines_.find(name) : lines_.end();
        return found != lines_.end() ? ZALNullableString(found->second) : std::nullopt;
    }
    void setLine(const char* name, const ZALNullableString& text) {
        if (name == nullptr) return;
        if (text) lines_[name] = *text;
        if (!text) lines_.erase(name);
    }

    Lines& lines_;
};

class TextTag final : public ZALTag {
  public:
    explicit TextTag(const std::vector<Lines*>& files, zal::Access lastAccess = zal::Access::readWrite) {
        auto contents = std::make_unique<zal::TagContents>();
        for (Lines* lines : files) {
            contents->add(std::make_unique<TextFile>(*lines),
                          lines == files.back() ? lastAccess : zal::Access::readWrite);
        }
        setContents(std::move(contents));
    }
};

TEST(TagStores, theFirstThatHasSomethingIsReadAndAllAreWritten) {
    Lines first{{"TITLE", ""}}, second{{"TITLE", "Two"}, {"ARTIST", ""}, {"TEMPO", "128"}};
    TextTag tag({&first, &second});
    EXPECT_EQ(tag.title(), "Two");
    EXPECT_EQ(tag.artist(), "") << "empty, which is not null";
    EXPECT_EQ(tag.album(), std::nullopt) << "no store has a place for it";
    EXPECT_EQ(tag.tempo(), 128);
    tag.setTitle("New");
    tag.setAlbum("Nowhere");
    tag.setTempo(90);
    tag.setArtist(std::nullopt);
    const Lines expected{{"TITLE", "New"}, {"TEMPO", "90"}};
    EXPECT_EQ(first, expected);
    EXPECT_EQ(second, expected);
}

TEST(TagStores, aStoreForReadingStaysAsItIs) {
    Lines first, second{{"ARTIST", "Two"}};
    TextTag tag({&first, &second}, zal::Access::readOnly);
    EXPECT_EQ(tag.artist(), "Two");
    tag.setArtist("One");
    tag.setSeratoCuePoints({});
    EXPECT_EQ(tag.artist(), "One");
    EXPECT_EQ(second, (Lines{{"ARTIST", "Two"}}));
}

TEST(TagStores, aFieldBehindTheFirstStoreFollowsWhereItIs) {
    Lines first, second{{"TITLE", "Two"}};
    TextTag tag({&first, &second});
    EXPECT_TRUE(tag.setProperty("title", {"New", "One"}) == false) << "it would become one text";
    EXPECT_TRUE(tag.setProperty("title", {"New"}));
    EXPECT_TRUE(tag.setProperty("ARTIST", {"A"}));
    EXPECT_EQ(first, (Lines{{"TITLE", "New"}, {"ARTIST", "A"}}));
    EXPECT_EQ(second, (Lines{{"TITLE", "New"}}));
    TextTag closed({&first, &second}, zal::Access::readOnly);
    EXPECT_FALSE(closed.setProperty("TITLE", {})) << "the second would go on to be read";
    EXPECT_TRUE(closed.setProperty("ARTIST", {}));
    EXPECT_EQ(first.size() + second.size(), 2U);
}

TEST(TagStores, recordsAndSeratosCuesComeBack) {
    Lines lines;
    TextTag tag({&lines});
    ZALTagEnergy energy;
    energy.setEnergy(7);
    tag.setZalEnergy(energy);
    ZALTagCuePoint cue;
    cue.setTime(12.5);
    cue.setName("Drop");
    tag.setSeratoCuePoints({cue});
    EXPECT_EQ(lines.size(), 3U) << "the record, and Serato's two";
    EXPECT_EQ(TextTag({&lines}).zalEnergy(), energy);
    EXPECT_THAT(TextTag({&lines}).seratoCuePoints().elements(), testing::ElementsAre(cue));
    tag.setZalEnergy(std::nullopt);
    tag.setSeratoCuePoints({});
    EXPECT_TRUE(lines.empty());
}

}  // namespace
