#include "source_files.h"
#include "support/pixel_reference.h"

namespace ovix::measure {
namespace {

using test::BandRadiance;

/// What a linear camera gives that looks at black bodies.
std::vector<SCalibrationPoint> Points(u8 preset, std::initializer_list<double> celsius, double slope = 4e5) {
    std::vector<SCalibrationPoint> points;
    for (const double c : celsius) points.push_back({1000 + slope * BandRadiance(c, 8, 12), c, preset});
    return points;
}

TEST(CalibrationFit, FindsTheTemperaturesOfBlackBodiesInEveryPreset) {
    std::vector<SCalibrationPoint> points = Points(0, {80, 10, 30, 55, 20, 100, 5, 64});
    for (const SCalibrationPoint& point : Points(3, {50, 200, 150, 300, 350, 100}, 6e4)) points.push_back(point);
    const std::pair<SFitOptions, double> cases[] = {
        {{.lowWave = 8, .highWave = 12, .order = 1}, 0.02},
        {{.lowWave = 8, .highWave = 12, .order = 2}, 0.02},
        {{.lowWave = 8, .highWave = 12, .order = 1, .model = ETemperatureModel::Polynomial}, 1},
        {{.lowWave = 8, .highWave = 12, .order = 1, .model = ETemperatureModel::Planck}, 12}};
    for (const auto& [options, tolerance] : cases) {
        const SCalibrationFit fit = FitCalibration(points, options);
        ASSERT_EQ(fit.presets.size(), 2u);
        EXPECT_EQ(fit.presets[1].preset, 3);
        EXPECT_EQ(fit.presets[0].points.front().point.celsius, 5) << "in the order of the counts";
        for (const SPresetFit& preset : fit.presets) {
            EXPECT_TRUE(preset.steady);
            EXPECT_LT(preset.Largest(), tolerance);
            EXPECT_LE(preset.Rms(), preset.Largest());
        }
        for (const SFittedPoint& point : fit.presets[0].points)
            EXPECT_NEAR(point.radiance, BandRadiance(point.point.celsius, 8, 12), 2e-3 * point.radiance);
    }
    // A polynomial that turns round between the counts measures two temperatures as one.
    const std::vector<SCalibrationPoint> bent = {{1000, 20}, {2000, 90}, {3000, 95}, {4000, 30}};
    EXPECT_FALSE(FitCalibration(bent, {.lowWave = 8, .highWave = 12}).presets[0].steady);
}

TEST(CalibrationFit, RefusesWhatDeterminesNone) {
    const SFitOptions good{.lowWave = 8, .highWave = 12};
    const std::tuple<std::vector<SCalibrationPoint>, SFitOptions, EError> cases[] = {
        {Points(0, {20, 30}), good, EError::FitUndetermined},
        {{{1000, 20}, {2000, 20}, {3000, 20}}, good, EError::FitUndetermined},
        {{{1000, -273}, {2000, -272.9}, {3000, 20}}, good, EError::FitUndetermined},
        {Points(8, {20, 30, 40}), good, EError::WrongArgument},
        {Points(0, {20, 30, 40}), {.lowWave = 12, .highWave = 8}, EError::WrongArgument},
        {Points(0, {20, 30, 40}), {.lowWave = 8, .highWave = 12, .order = 10}, EError::WrongArgument},
        {{{1000, 20}, {2000, 1e9}, {3000, 30}}, good, EError::WrongArgument},
        {{{NAN, 20}, {2000, 25}, {3000, 30}}, good, EError::WrongArgument}};
    for (const auto& c : cases)
        EXPECT_EQ(test::IdOf([&] { FitCalibration(std::get<0>(c), std::get<1>(c)); }), std::get<2>(c)) << &c - cases;
}

}  // namespace
}  // namespace ovix::measure
