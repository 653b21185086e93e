#include "apps/ovix/demo_presets.h"

#include <algorithm>
#include <cmath>

#include "apps/ovix/demo_require.h"
#include "apps/ovix/synth/detector.h"
#include "apps/ovix/units.h"
#include "reduce/reduce.h"

namespace ovix::app {
namespace {

using CCalibration = reduce::CMerlinFactoryCalReduceObject;

constexpr u8 kPresets = 2;
constexpr u16 kFullCount = 16383;
constexpr double kDarkCounts = 300;  ///< of a detector that sees nothing

struct SPresetSetup {
    double milliseconds;
    float low, high;  ///< degrees Celsius
};
constexpr SPresetSetup kSetups[kPresets] = {{2.0, 0.0f, 60.0f}, {0.5, 40.0f, 100.0f}};

/// Radiances of this calibration are counts that the first preset would give, without the dark ones. Some 15,000 of
/// them are a black body of 60 degrees Celsius, by a Planck curve for wavelengths around 4.4 micrometres.
void FillCalibration(CCalibration& cal, const SPresetSetup& setup) {
    const double gain = kSetups[0].milliseconds / setup.milliseconds;
    cal.degree = 1;
    cal.c[0] = -gain * kDarkCounts;
    cal.c[1] = gain;
    cal.planckR = 2.95e8;
    cal.planckB = 3300;
    cal.planckF = 1;
    cal.atmX = 1.9;
    cal.atmAlpha1 = 0.006569;
    cal.atmAlpha2 = 0.01262;
    cal.atmBeta1 = -0.002276;
    cal.atmBeta2 = -0.00667;
    cal.lowTemp = setup.low;
    cal.highTemp = setup.high;
    cal.valid = true;
}

void FillScene(reduce::CObjectParametersReduceObject& scene) {
    scene.emissivity = 0.95f;
    scene.distance = 2.0f;
    scene.reflectedTemp = 295.15f;
    scene.atmosphereTemp = 294.15f;
    scene.relativeHumidity = 0.45f;
    scene.fromSource = scene.valid = true;
}

class CTwoPresets {
  public:
    CTwoPresets(const SDemoOptions& options, std::span<const float> kelvin)
        : options_(options), count_(static_cast<u32>(kelvin.size())), kelvin_(kelvin) {
        objects_.GetSourceInfo(true)->baseUnit = Counts;
        FillScene(*objects_.GetObjectParameters(true));
        const CDetector detector({.type = {}, .width = options.width, .height = options.height}, kFullCount);
        for (u8 preset = 0; preset < kPresets; ++preset) {
            FillCalibration(*objects_.Get<CCalibration>(preset, true), kSetups[preset]);
            const auto correction = detector.Correction();
            correction->preset = preset;
            objects_.Add(correction);
            detector.Read(EvenCounts(preset), preset, frames_[preset]);
        }
        badPixels_ = objects_.GetCorrection(0, false)->mask.get();
        context_.setReduceObjs(&objects_);
        Require(context_.SetUnit(TemperatureFactory, options.scale), "the unit");
    }

    SPresetDemo Measure() {
        SPresetDemo demo;
        for (u8 preset = 0; preset < kPresets; ++preset) {
            const SPresetSetup& setup = kSetups[preset];
            demo.presets.push_back({setup.milliseconds, setup.low, setup.high, Alone(preset)});
        }
        demo.values.resize(count_);
        demo.status.resize(count_);
        Merge(demo);
        demo.merged = Compare(demo.values, demo.status);
        return demo;
    }

  private:
    /// What a detector without any fault counts, with fractions: the model's formula backwards.
    std::vector<float> EvenCounts(u8 preset) {
        const CCalibration& cal = *objects_.Get<CCalibration>(preset, false);
        const auto scene = objects_.GetObjectParameters(false);
        reduce::CMrlConv model;
        model.Init(cal, *scene);
        const double path = 1 / (model.getUsedAtmTao() * scene->extOpticsTrans);
        std::vector<float> counts;
        for (const float temperature : kelvin_) {
            const double radiance = model.TemperatureToRadiance(temperature, nullptr, Kelvin);
            counts.push_back(static_cast<float>((radiance / path - cal.c[0]) / cal.c[1]));
        }
        return counts;
    }
    void Enable(std::initializer_list<u8> enabled) {
        bool presets[reduce::CConvertContext::PresetCount] = {};
        for (const u8 preset : enabled) presets[preset] = true;
        Require(context_.Update(presets, reduce::CConvertContext::PresetCount, 0), "the calibration");
    }
    SAgreement Compare(std::span<const float> values, std::span<const u8> status) const {
        return CompareWithScene(values, status, badPixels_, kelvin_, options_.scale);
    }
    SAgreement Alone(u8 preset) {
        Enable({preset});
        std::vector<u16> corrected(count_);
        std::vector<float> values(count_);
        std::vector<u8> status(count_);
        STypedData counts{frames_[preset].data(), UInt16};
        Require(context_.ApplyNUC(counts, {corrected.data(), UInt16}, count_, counts), "the correction");
        Require(context_.Convert(counts, {values.data(), Flt32}, status.data(), count_), "the conversion");
        return Compare(values, status);
    }
    void Merge(SPresetDemo& demo) {
        Enable({0, 1});
        STypedData frames[reduce::CConvertContext::PresetCount] = {};
        for (u8 preset = 0; preset < kPresets; ++preset) frames[preset] = {frames_[preset].data(), UInt16};
        std::vector<u16> merged(count_);
        std::vector<u8> map(count_);
        const STypedData counts{merged.data(), UInt16};
        Require(context_.Abate(frames, count_, counts, map.data()), "the merging");
        Require(context_.Convert(counts, map.data(), {demo.values.data(), Flt32}, demo.status.data(), count_),
                "the conversion by preset");
        for (u8 preset = 0; preset < kPresets; ++preset) {
            const auto pixels = std::count(map.begin(), map.end(), preset);
            demo.presets[preset].share = static_cast<double>(pixels) / count_;
        }
    }

    const SDemoOptions& options_;
    u32 count_;
    std::span<const float> kelvin_;
    reduce::CReduceObjectArray objects_;
    reduce::CConvertContext context_;
    std::vector<u16> frames_[kPresets];
    const u8* badPixels_ = nullptr;
};

}  // namespace

SPresetDemo MeasurePresets(const SDemoOptions& options, std::span<const float> kelvin) {
    return CTwoPresets(options, kelvin).Measure();
}

std::string SPresetDemo::Text(ETempType scale) const {
    const auto range = [&](float low, float high) {
        const auto degrees = [&](float celsius) { return CMath::ConvertTemperature(celsius, Celsius, scale); };
        return fmt::format("{:.0f} to {:.0f}", degrees(low), degrees(high));
    };
    CAgreementTable table("Integration time",
                          {fmt::format("Calibrated ({})", UnitText(TemperatureFactory, scale).symbol)});
    for (std::size_t preset = 0; preset < presets.size(); ++preset) {
        const SPresetAlone& alone = presets[preset];
        table.Row(fmt::format("{} ms (preset {})", alone.milliseconds, preset), range(alone.low, alone.high),
                  alone.agreement);
    }
    table.Row("merged", range(presets.front().low, presets.back().high), merged);
    std::string shares;
    for (std::size_t preset = 0; preset < presets.size(); ++preset)
        shares += fmt::format("{}{:.1f} % from preset {}", preset ? ", " : "", 100 * presets[preset].share, preset);
    return table.Text() +
           fmt::format(
               "\nAlone, the longer one saturates in the hot bearing and the shorter one cannot measure what is "
               "cool. The merged frame takes {}.\n",
               shares);
}

Json SPresetDemo::Document() const {
    Json list = Json::array();
    for (const SPresetAlone& alone : presets) {
        Json json = alone.agreement.Document();
        json.update({{"integrationMilliseconds", alone.milliseconds},
                     {"lowCelsius", alone.low},
                     {"highCelsius", alone.high},
                     {"shareOfMerged", alone.share}});
        list.push_back(std::move(json));
    }
    Json json = merged.Document();
    json["agrees"] = merged.Holds();
    return {{"presets", std::move(list)}, {"merged", std::move(json)}};
}

}  // namespace ovix::app
