#include "stores/ID3v2Properties.h"

#include "stores/ID3v2Store.h"

#include <commentsframe.h>
#include <gmock/gmock.h>
#include <textidentificationframe.h>

namespace {

using TagLib::StringList;

// People and their parts stand in one frame: the others stay.
TEST(ID3v2Properties, oneOfSeveralInAFrame) {
    zal::ID3v2Store store;
    TagLib::PropertyMap people;
    people.insert("ARRANGER", StringList("A"));
    people.insert("PRODUCER", StringList("P"));
    store.tagToEdit().addFrame(TagLib::ID3v2::TextIdentificationFrame::createTIPLFrame(people));
    zal::setProperty(store, "ARRANGER", StringList("B"));
    EXPECT_EQ(zal::propertiesOf(store.tag())["PRODUCER"], StringList("P"));
    EXPECT_EQ(zal::propertiesOf(store.tag())["ARRANGER"], StringList("B"));
    zal::setProperty(store, "ARRANGER", {});
    EXPECT_FALSE(zal::propertiesOf(store.tag()).contains("ARRANGER"));
    EXPECT_TRUE(zal::propertiesOf(store.tag()).contains("PRODUCER"));
}

TEST(ID3v2Properties, aFrameKeepsWhatIsNoValue) {
    zal::ID3v2Store store;
    auto* comment = new TagLib::ID3v2::CommentsFrame(TagLib::String::UTF16);
    comment->setLanguage("ger");
    comment->setText("old");
    store.tagToEdit().addFrame(comment);
    zal::setProperty(store, "COMMENT", StringList("new"));
    ASSERT_EQ(store.tag().frameList().size(), 1U);
    EXPECT_EQ(store.tag().frameList().front(), comment);
    EXPECT_EQ(comment->text(), "new");
    zal::setProperty(store, "COMMENT:iTunNORM", StringList("x"));
    EXPECT_EQ(store.tag().frameList().size(), 2U);
    EXPECT_EQ(zal::propertiesOf(store.tag())["COMMENT"], StringList("new"));
}

}  // namespace
