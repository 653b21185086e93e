#include "apps/ovix/scene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace ovix::app {
namespace {

double MeanOf(const std::vector<float>& kelvin, const measure::CPixelSet& region, u16 width) {
    double sum = 0;
    for (const reduce::SScanLine& line : region.Lines()) {
        for (u32 x = line.left; x <= line.right; ++x) sum += kelvin[std::size_t{line.row} * width + x];
    }
    return sum / region.Count();
}

TEST(Scene, RegionsShowWhatTheyAreNamedAfterAtEverySize) {
    for (const auto& [width, height] : {std::pair<u16, u16>{32, 32}, {160, 120}, {640, 512}, {300, 900}, {900, 300}}) {
        const CScene scene(width, height);
        for (u64 frame : {0, 149, 349, 402, 100'000}) {  // at the start, the hottest and the coldest moment, much later
            const std::vector<float> kelvin = scene.Render(frame);
            ASSERT_EQ(kelvin.size(), std::size_t{width} * height);
            const auto [least, greatest] = std::minmax_element(kelvin.begin(), kelvin.end());
            EXPECT_GT(*least, kSceneColdest);
            EXPECT_LT(*greatest, kSceneHottest);

            const std::vector<measure::CPixelSet> regions = SceneRegions(width, height);
            ASSERT_EQ(regions.size(), 3u);
            EXPECT_GT(MeanOf(kelvin, regions[0], width), MeanOf(kelvin, regions[2], width)) << width << " " << frame;
            EXPECT_LT(MeanOf(kelvin, regions[1], width), 289) << width;
            EXPECT_NEAR(MeanOf(kelvin, regions[2], width), 319, 4) << width;
        }
    }
}

/// The bearing warms up, cools and comes back to where it was, never by a jump; and a billet passes and cools.
TEST(Scene, WarmsUpCoolsAndMoves) {
    constexpr u16 kWidth = 160, kHeight = 120;
    const CScene scene(kWidth, kHeight);
    const measure::CPixelSet bearing = SceneRegions(kWidth, kHeight)[0];
    std::vector<double> means;
    double billet[2] = {};
    for (u64 frame = 0; frame < 900; ++frame) {
        const std::vector<float> kelvin = scene.Render(frame);
        means.push_back(MeanOf(kelvin, bearing, kWidth));
        if (frame > 0) {
            EXPECT_LT(std::abs(means[frame] - means[frame - 1]), 0.6) << frame;
        }
        for (int side : {0, 1})  // of the floor below the machine
            billet[side] = std::max<double>(billet[side], kelvin[110 * kWidth + (side ? 150u : 10u)]);
    }
    const struct {
        u64 frame;
        double kelvin;
    } moments[] = {{0, 341}, {50, 341 + 9.5 * 0.632121}, {150, 341 + 9.5 * 0.950213}, {275, 316 + 34.02702 * 0.367879}};
    for (const auto& m : moments)  // 20 ms apart
        EXPECT_NEAR(scene.Render(m.frame)[62 * kWidth + 105], m.kelvin, 0.001) << m.frame;
    EXPECT_GT(means[149] - means[0], 5);
    EXPECT_LT(means[349] - means[149], -15);
    EXPECT_NEAR(means[403], means[0], 1);  // after a cycle of 8.07 s
    EXPECT_GT(billet[0], 335);
    EXPECT_GT(billet[1], 305);
    EXPECT_LT(billet[1], 320);
}

}  // namespace
}  // namespace ovix::app
