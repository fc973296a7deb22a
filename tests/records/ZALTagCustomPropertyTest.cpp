#include <zaltag/base/ZALProgrammingError.h>
#include <zaltag/records/ZALTagBeatGrid.h>
#include <zaltag/records/ZALTagCuePoints.h>
#include <zaltag/records/ZALTagEnergy.h>
#include <zaltag/records/ZALTagKey.h>
#include <zaltag/records/ZALTagVelvetCascade.h>

#include <gtest/gtest.h>

namespace {

TEST(CustomProperty, equalityTakesClassAlgorithmAndPayload) {
    const auto energy = ZALTagEnergy(0, 0);
    const ZALTagCustomProperty base;
    EXPECT_FALSE(energy == ZALTagCuePoints() || energy == base) << "the class on the left is asked for";
    EXPECT_TRUE(base == energy) << "of a subclass, with equal algorithm";
    const auto key = ZALTagKey("8A", 1);
    EXPECT_TRUE(key == ZALTagKey("8A", 1) && key != ZALTagKey("8A", 2) && key != ZALTagKey("8B", 1));
    const ZALTagKey null;
    EXPECT_TRUE(null == null && null != ZALTagKey()) << "two null keys are unequal";
    EXPECT_NE(ZALTagEnergy(5, 1).hash(), ZALTagEnergy(6, 1).hash());
    EXPECT_THROW(ZALTagVelvetCascade::algorithmVersion(), ZALProgrammingError) << "it has none";
    const auto named = [] { return ZALTagVelvetCascade(std::make_shared<const std::string>("a.wav"), true); };
    EXPECT_NE(named(), named()) << "names are compared by identity";
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

}  // namespace
