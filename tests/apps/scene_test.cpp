#include "apps/ovix/scene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace ovix::app {
namespace {

double MeanOf(const std::vector<float>& kelvin, const SRegion& region, u16 width) {
    double sum = 0;
    for (int y = region.y; y < region.y + region.height; ++y) {
        for (int x = region.x; x < region.x + region.width; ++x) sum += kelvin[static_cast<std::size_t>(y * width + x)];
    }
    return sum / (region.width * region.height);
}

TEST(Scene, RegionsShowWhatTheyAreNamedAfterAtEverySize) {
    for (const auto& [width, height] : {std::pair<u16, u16>{32, 32}, {160, 120}, {640, 480}, {640, 512}, {300, 900}}) {
        for (u64 frame : {0, 100'000}) {
            const std::vector<float> kelvin = RenderScene(width, height, frame);
            ASSERT_EQ(kelvin.size(), std::size_t{width} * height);
            const auto [least, greatest] = std::minmax_element(kelvin.begin(), kelvin.end());
            EXPECT_GT(*least, 283);
            EXPECT_LT(*greatest, 363);

            const std::vector<SRegion> regions = SceneRegions(width, height);
            ASSERT_EQ(regions.size(), 3u);
            for (const SRegion& region : regions) {
                EXPECT_LE(region.x + region.width, width) << region.name;
                EXPECT_LE(region.y + region.height, height) << region.name;
            }
            EXPECT_GT(MeanOf(kelvin, regions[0], width), 330) << width;
            EXPECT_LT(MeanOf(kelvin, regions[1], width), 289) << width;
            EXPECT_NEAR(MeanOf(kelvin, regions[2], width), 319, 4) << width;
        }
    }
}

}  // namespace
}  // namespace ovix::app
