#include "apps/ovix/demo.h"

#include <gtest/gtest.h>

#include "app_files.h"
#include "apps/ovix/app_error.h"
#include "apps/ovix/json.h"
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

}  // namespace
}  // namespace ovix::app
