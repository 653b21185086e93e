#include "apps/ovix/demo.h"

#include <cmath>

#include "app_files.h"
#include "apps/ovix/app_error.h"
#include "apps/ovix/scene.h"
#include "apps/ovix/units.h"

namespace ovix::app {
namespace {

using namespace test;

TEST(Demo, MeasuresTheSceneInAllFormsAndWritesPictures) {
    CTestFolder folder;
    for (ETempType scale : {Celsius, Fahrenheit, Kelvin, Rankine}) {
        const SDemoOptions options{.directory = folder.At(), .width = 161, .height = 120, .scale = scale, .json = true};
        testing::internal::CaptureStdout();
        EXPECT_EQ(RunDemo(options), ExitDone);
        std::fflush(stdout);
        const Json report = Json::parse(testing::internal::GetCapturedStdout());
        ASSERT_EQ(report["frames"].size(), 3u);
        for (const Json& frame : report["frames"]) {
            // Noise, rounding and truncation to counts: the limit would be no proof if it were far away.
            EXPECT_GT(frame["maximumDifferenceKelvin"].get<double>(), 0.02) << frame;
            EXPECT_LT(frame["maximumDifferenceKelvin"].get<double>(), 0.1) << frame;
            EXPECT_GT(frame["recordedMaximumDifferenceKelvin"].get<double>(), 0.02) << frame;
            EXPECT_LT(frame["recordedMaximumDifferenceKelvin"].get<double>(), 0.1) << frame;
            EXPECT_EQ(frame["status"]["good"], 161 * 120);
            EXPECT_GE(frame["replacedPixels"].get<int>(), 3);
        }
        // Each integration time alone has a part that it cannot measure, together they have none.
        const Json& presets = report["presets"];
        for (const u32 preset : {0u, 1u}) EXPECT_GT(presets["presets"][preset]["flaggedPixels"], 100);
        EXPECT_GT(presets["presets"][1]["shareOfMerged"].get<double>(), 0.005);
        for (const Json& merged : {presets["merged"], report["userCalibration"]}) {
            EXPECT_EQ(merged["flaggedPixels"], 0);
            EXPECT_GT(merged["maximumDifferenceKelvin"].get<double>(), 0.02) << merged;
            EXPECT_LT(merged["maximumDifferenceKelvin"].get<double>(), 0.1) << merged;
        }
        EXPECT_EQ(report["unit"], UnitText(TemperatureFactory, scale).symbol);
        EXPECT_EQ(report["parameters"]["emissivity"], 0.95);
        ASSERT_EQ(report["statistics"].size(), 4u);
        const double pipe = CMath::ConvertTemperature(report["statistics"][2]["mean"], scale, Kelvin);
        EXPECT_NEAR(pipe, 284.3, 1);
    }
    EXPECT_EQ(folder.Names(),
              (std::vector<std::string>{"motor-digital-swapped.krt", "motor-digital.krt", "motor-jpeg-ls.krt",
                                        "motor-merged.png", "motor-user-calibration.json", "motor.json", "motor.npy",
                                        "motor.png", "motor.status.npy", "motor.status.tif", "motor.tif"}));
}

TEST(Demo, SaysWhatIsWrong) {
    CTestFolder folder;
    WriteText(folder.At("file"), "");
    EXPECT_THROW(RunDemo({.directory = folder.At("file"), .width = 64, .height = 48}), CAppError);
    EXPECT_THROW(RunDemo({.directory = folder.At(), .width = 31, .height = 48}), CAppError);
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"file"});
    EXPECT_FALSE(SAgreement{}.Holds());
    EXPECT_FALSE((SAgreement{.good = 1, .max = 0.1}).Holds());
}

double MeanOf(const std::vector<float>& kelvin, const measure::CPixelSet& region, u16 width) {
    double sum = 0;
    for (const reduce::SScanLine& line : region.Lines())
        for (u32 x = line.left; x <= line.right; ++x) sum += kelvin[std::size_t{line.row} * width + x];
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
        EXPECT_TRUE(frame == 0 || std::abs(means[frame] - means[frame - 1]) < 0.6) << frame;
        for (int side : {0, 1})  // of the floor below the machine
            billet[side] = std::max<double>(billet[side], kelvin[110 * kWidth + (side ? 150u : 10u)]);
    }
    const std::pair<u64, double> moments[] = {
        {0, 341}, {50, 341 + 9.5 * 0.632121}, {150, 341 + 9.5 * 0.950213}, {275, 316 + 34.02702 * 0.367879}};
    for (const auto& [frame, kelvin] : moments)  // 20 ms apart
        EXPECT_NEAR(scene.Render(frame)[62 * kWidth + 105], kelvin, 0.001) << frame;
    EXPECT_GT(means[149] - means[0], 5);
    EXPECT_LT(means[349] - means[149], -15);
    EXPECT_NEAR(means[403], means[0], 1);  // after a cycle of 8.07 s
    EXPECT_GT(billet[0], 335);
    EXPECT_GT(billet[1], 305);
    EXPECT_LT(billet[1], 320);
}

}  // namespace
}  // namespace ovix::app
