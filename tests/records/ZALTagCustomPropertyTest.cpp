#include <zaltag/base/ZALProgrammingError.h>
#include <zaltag/records/ZALTagBeatGrid.h>
#include <zaltag/records/ZALTagCuePoints.h>
#include <zaltag/records/ZALTagEnergy.h>
#include <zaltag/records/ZALTagKey.h>
#include <zaltag/records/ZALTagVelvetCascade.h>

#include <gmock/gmock.h>

#include <functional>

namespace {

TEST(CustomProperty, abstractMembersThrow) {
    ZALTagCustomProperty base;
    const std::pair<std::function<void()>, std::string> cases[] = {
        {[&] { base.JSONDict(); }, "-[ZALTagCustomProperty JSONDict]"},
        {[&] { base.updateWithJSONDict({}); }, "-[ZALTagCustomProperty updateWithJSONDict:]"},
        {[] { ZALTagCustomProperty::algorithmKey(); }, "+[ZALTagCustomProperty algorithmKey]"},
        {[] { ZALTagVelvetCascade::algorithmKey(); }, "+[ZALTagCustomProperty algorithmKey]"},
        {[] { ZALTagVelvetCascade::algorithmVersion(); }, "+[ZALTagCustomProperty algorithmVersion]"},
        {[] { ZALTagVelvetCascade::setAlgorithmVersion(1); }, "+[ZALTagCustomProperty setAlgorithmVersion:]"},
    };
    for (const auto& [call, member] : cases) {
        EXPECT_THAT(call, testing::ThrowsMessage<ZALProgrammingError>(
                              member + " is abstract implement it in your subclass!"));
    }
}

TEST(CustomProperty, equalityAsksForTheClassOnTheLeft) {
    const ZALTagEnergy energy = ZALTagEnergy::keyWithEnergy(0, 0);
    const ZALTagCustomProperty base;
    EXPECT_FALSE(energy == ZALTagCuePoints());
    EXPECT_FALSE(energy == base);
    EXPECT_TRUE(base == energy) << "of a subclass, with equal algorithm";
}

TEST(CustomProperty, equalityTakesAlgorithmAndPayload) {
    const ZALTagKey null;
    EXPECT_EQ(ZALTagKey::keyWithKey("8A", 1), ZALTagKey::keyWithKey("8A", 1));
    EXPECT_NE(ZALTagKey::keyWithKey("8A", 1), ZALTagKey::keyWithKey("8A", 2));
    EXPECT_NE(ZALTagKey::keyWithKey("8A", 1), ZALTagKey::keyWithKey("8B", 1));
    EXPECT_NE(null, ZALTagKey()) << "two null keys are unequal";
    EXPECT_EQ(null, null) << "but one record is equal to itself";
    EXPECT_NE(ZALTagEnergy::keyWithEnergy(5, 1), ZALTagEnergy::keyWithEnergy(6, 1));
    EXPECT_NE(ZALTagEnergy::keyWithEnergy(5, 1).hash(), ZALTagEnergy::keyWithEnergy(6, 1).hash());
}

TEST(BeatGrid, beatsMayDifferByAHair) {
    const auto grid = [](std::optional<ZALArray<double>> beats, float tempo) {
        return ZALTagBeatGrid::beatGridWithBeats(std::move(beats), tempo, 1);
    };
    const ZALTagBeatGrid one = grid(ZALArray<double>{1.0, 2.0}, 120);
    EXPECT_EQ(one, grid(ZALArray<double>{1.0, 2.0 + 1e-14}, 120));
    EXPECT_NE(one, grid(ZALArray<double>{1.0, 2.0 + 1e-12}, 120));
    EXPECT_NE(one, grid(ZALArray<double>{1.0}, 120));
    EXPECT_NE(one, grid(ZALArray<double>{1.0, 2.0}, 120.001f));
    EXPECT_EQ(grid(std::nullopt, 120), grid(ZALArray<double>{}, 120));
}

TEST(VelvetCascade, backupNamesAreComparedByIdentity) {
    const auto cascade = [](std::shared_ptr<const std::string> name, bool processed) {
        return ZALTagVelvetCascade::tagWithBackupFileName(std::move(name), processed);
    };
    const auto name = std::make_shared<const std::string>("a.wav");
    EXPECT_EQ(cascade(name, true), cascade(name, true));
    EXPECT_NE(cascade(name, true), cascade(std::make_shared<const std::string>("a.wav"), true));
    EXPECT_NE(cascade(name, true), cascade(name, false));
    const ZALTagVelvetCascade read =
        *ZALTagVelvetCascade::propertyWithJSONDict(cascade(name, true).JSONDict());
    EXPECT_EQ(*read.backupFileName(), "a.wav");
}

}  // namespace
