#include "apps/ovix/demo_user_calibration.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "apps/ovix/calibration/calibration_fit.h"
#include "apps/ovix/demo_require.h"
#include "apps/ovix/output/output_file.h"
#include "apps/ovix/user_calibration.h"

namespace ovix::app {
namespace {

constexpr u32 kPoints = 12;
constexpr float kAround = 1;  ///< kelvin: pixels that are no further from a point's temperature make it
constexpr SFitOptions kFit = {.lowWave = 8, .highWave = 12, .order = 4};

/// Means of counts and temperatures of the scene at steps from its coldest to its hottest part.
std::vector<SCalibrationPoint> Points(const SDemoFrame& frame, std::span<const float> kelvin) {
    const auto [low, high] = std::minmax_element(kelvin.begin(), kelvin.end());
    std::vector<SCalibrationPoint> points;
    for (u32 n = 0; n < kPoints; ++n) {
        const float middle = *low + (*high - *low) * static_cast<float>(n) / (kPoints - 1);
        double counts = 0, temperatures = 0, pixels = 0;
        for (std::size_t i = 0; i < kelvin.size(); ++i) {
            if (std::abs(kelvin[i] - middle) > kAround || frame.correction->mask[i]) continue;
            counts += frame.counts[i];
            temperatures += kelvin[i];
            ++pixels;
        }
        if (pixels > 0)
            points.push_back({counts / pixels, CMath::ConvertTemperature(temperatures / pixels, Kelvin, Celsius)});
    }
    return points;
}

void Write(const std::filesystem::path& path, const CRCalFile& calibration, bool overwrite) {
    COutputFile output(path, overwrite);
    const std::string document = UserCalibrationDocument(calibration).dump(2) + '\n';
    output.Write(document.data(), document.size());
    output.Commit();
}

SAgreement Measure(const std::filesystem::path& path, SDemoFrame& frame, std::span<const float> kelvin,
                   ETempType scale) {
    reduce::CReduceObjectArray objects;
    objects.GetSourceInfo(true)->baseUnit = Counts;
    const auto scene = objects.GetObjectParameters(true);
    scene->emissivity = 1;
    scene->atmosphereTrans = 1;
    LoadUserCalibration(path.string(), objects);

    reduce::CConvertContext context;
    context.setReduceObjs(&objects);
    bool presets[reduce::CConvertContext::PresetCount] = {true};
    const bool ready =
        context.SetUnit(TemperatureUser, scale) && context.Update(presets, reduce::CConvertContext::PresetCount, 0);
    Require(ready, "the user calibration");
    const u32 count = static_cast<u32>(kelvin.size());
    std::vector<float> values(count);
    std::vector<u8> status(count);
    Require(context.Convert({frame.counts.data(), UInt16}, {values.data(), Flt32}, status.data(), count),
            "the conversion");
    return CompareWithScene(values, status, frame.correction->mask, kelvin, scale);
}

}  // namespace

SUserCalibrationDemo CalibrateAndMeasure(const std::filesystem::path& path, SDemoFrame& frame,
                                         std::span<const float> kelvin, const SDemoOptions& options) {
    const SCalibrationFit fit = FitCalibration(Points(frame, kelvin), kFit);
    const SPresetFit& preset = fit.presets.front();
    Write(path, fit.calibration, options.overwrite);
    return {static_cast<u32>(preset.points.size()), kFit.order, preset.Rms(), preset.Largest(),
            Measure(path, frame, kelvin, options.scale)};
}

std::string SUserCalibrationDemo::Text(const SAgreement& factory) const {
    CAgreementTable table("Calibration", {"From"});
    table.Row("factory", "the frame", factory);
    table.Row("user", fmt::format("{} points", points), agreement);
    return table.Text() + fmt::format(
                              "\nThe polynomial of order {} from counts to radiance leaves residuals of {:.3f} K "
                              "RMS, {:.3f} K at most.\n",
                              order, rms, largest);
}

Json SUserCalibrationDemo::Document() const {
    Json json = agreement.Document();
    json.update({{"points", points},
                 {"order", order},
                 {"rmsResidualKelvin", rms},
                 {"largestResidualKelvin", largest},
                 {"agrees", agreement.Holds()}});
    return json;
}

}  // namespace ovix::app
