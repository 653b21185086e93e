#include "apps/ovix/demo.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "apps/ovix/facts/user_calibration.h"
#include "apps/ovix/fault.h"
#include "apps/ovix/output/output_file.h"
#include "apps/ovix/scene.h"
#include "apps/ovix/synth/detector.h"
#include "apps/ovix/synth/synth.h"
#include "measure/measure.h"

namespace ovix::app {

using measure::SCalibrationPoint;
using measure::SFrameFormat;

namespace {

constexpr u64 kFrame = 0;

/// The demo makes its frames itself: what the library refuses there is a fault of the program, and says at which step.
void Require(bool done, const char* step) {
    if (!done) throw CFault({.problem = fmt::format("the library refuses {} for a frame that it should take", step)});
}

/// Compares temperatures of a scale, pixel by pixel. A `badPixels` that is not 0 marks a pixel that is replaced.
SAgreement CompareWithScene(std::span<const float> values, std::span<const u8> status, const u8* badPixels,
                            std::span<const float> kelvin, ETempType scale) {
    SAgreement agreement;
    double squares = 0;
    for (std::size_t i = 0; i < kelvin.size(); ++i) {
        const double measured = CMath::ConvertTemperature(values[i], scale, Kelvin);
        const double away = std::abs(measured - kelvin[i]);
        if (status[i] != 0) {
            ++agreement.flagged;
        } else if (badPixels[i]) {  // it shows what its neighbour sees
            ++agreement.replaced;
            agreement.replacedMax = std::max(agreement.replacedMax, away);
        } else {
            ++agreement.good;
            agreement.max = std::max(agreement.max, away);
            squares += away * away;
        }
    }
    if (agreement.good > 0) agreement.rms = std::sqrt(squares / static_cast<double>(agreement.good));
    return agreement;
}

struct SForm {
    GUID type;
    const char* form;
};
constexpr SForm kForms[] = {
    {frame_types::kK410GigE, "digital"},
    {frame_types::kK410MJLS, "jpeg-ls"},
    {frame_types::kK410GigE, "digital-swapped"},
};

std::string NameOfType(const GUID& type) {
    SPixelType facts;
    Require(GetPixelType(type, facts), "the pixel type");
    return facts.name.GetUTF8();
}

SFrameFormat FormatOf(const SForm& form, const SDemoOptions& options) {
    return {.filter = CString(FindSynthFamily(form.type)->filter).GetUTF8(),
            .pixelType = form.type,
            .pixelTypeName = NameOfType(form.type),
            .width = options.width,
            .height = options.height};
}

/// What an application tells the library of its source.
void DescribeSource(reduce::CReduceObjectArray& objects, const SFrameFormat& format) {
    const auto source = objects.GetSourceInfo(true);
    source->cameraName = L"K410";
    source->width = source->frameWidth = format.width;
    source->height = source->frameHeight = format.height;
    source->pixelType = format.pixelType;
    source->baseUnit = Counts;
    source->valid = true;
}

/// One frame's way through the library: check and decode, choose the unit, correct, convert.
SDemoFrame Measure(const SForm& form, const SDemoOptions& options, std::span<const float> kelvin) {
    const auto camera = FindSynthFamily(form.type)->make(
        {.type = form.type, .form = form.form, .width = options.width, .height = options.height});
    std::vector<u8> bytes = camera->Frame(kFrame, kelvin);

    SDemoFrame frame;
    frame.form = form.form;
    frame.pixelType = NameOfType(form.type);
    frame.raw = bytes;
    const SFrameFormat format = FormatOf(form, options);
    DescribeSource(frame.objects, format);
    frame.correction = camera->Correction();
    frame.objects.Add(frame.correction);

    const u32 count = format.PixelCount();
    std::vector<u16> pixels(count);
    u8 preset = 0;
    const CString decoder(format.filter.c_str());
    const u32 size = static_cast<u32>(bytes.size());
    Require(reduce::CheckFrame(decoder, bytes.data(), form.type, format.width, format.height, size), "the check");
    Require(reduce::filterFactory()->Create(decoder)->ParseFrame(bytes.data(), form.type, format.width, format.height,
                                                                 size, {pixels.data(), UInt16}, frame.objects, preset),
            "the decoding");

    reduce::CConvertContext context;
    context.setReduceObjs(&frame.objects);
    Require(context.SetUnit(TemperatureFactory, options.scale), "the unit");
    bool presets[reduce::CConvertContext::PresetCount] = {};
    presets[preset] = true;
    Require(context.Update(presets, reduce::CConvertContext::PresetCount, 0), "the calibration");

    frame.counts.resize(count);
    const STypedData counts{frame.counts.data(), UInt16};
    Require(context.ApplyNUC({pixels.data(), UInt16}, counts, count), "the correction");
    frame.values.resize(count);
    frame.status.resize(count);
    Require(context.Convert(counts, {frame.values.data(), Flt32}, frame.status.data(), count), "the conversion");
    return frame;
}

std::vector<std::pair<std::string, reduce::CStats>> Figures(SDemoFrame& frame, const SDemoOptions& options) {
    std::vector<std::pair<std::string, reduce::CStats>> figures(1);
    const STypedData values{frame.values.data(), Flt32};
    figures[0].first = "frame";
    reduce::GetStats(figures[0].second, values, options.width, options.height, nullptr, 0, frame.status.data());
    for (const measure::CPixelSet& region : SceneRegions(options.width, options.height)) {
        reduce::CStats stats;
        Require(reduce::GetStats(stats, values, frame.status.data(), options.width, options.height, region.Lines()),
                "the statistics");
        figures.emplace_back(region.Shape().name, stats);
    }
    return figures;
}

void MakeDirectory(const std::filesystem::path& directory) {
    std::error_code error;
    std::filesystem::create_directories(directory, error);
    if (error) throw SystemFault(ExitFile, directory.string(), "cannot create the directory", error.value());
}

void Record(const std::filesystem::path& path, const SFrameFormat& format, SDemoFrame& frame,
            const SDemoOptions& options) {
    const u32 size = static_cast<u32>(frame.raw.size());
    measure::CRecordingWriter writer(path, frame.objects, format, size, {.overwrite = options.overwrite});
    writer.Add(frame.raw);
    writer.Finish();
}

/// Records the raw frame with all its metadata, measures it from that file alone and compares what comes out.
SAgreement RecordAndMeasure(const std::filesystem::path& path, const SFrameFormat& format, SDemoFrame& frame,
                            std::span<const float> kelvin, const SDemoOptions& options) {
    Record(path, format, frame, options);
    const measure::CMeasurement measurement(measure::Open(path),
                                            {.quantity = measure::EQuantity::Temperature, .scale = options.scale});
    const measure::CFrame measured = measurement.Measure(0);
    return CompareWithScene(measured.values, measured.status, frame.correction->mask, kelvin, options.scale);
}

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
            frames_[preset] = detector.Read(EvenCounts(preset), preset);
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

/// Two frames of a cooled camera with a calibration for each preset through the library: corrected and merged with the
/// library's default thresholds, and converted by the map that says which preset each pixel came from.
SPresetDemo MeasurePresets(const SDemoOptions& options, std::span<const float> kelvin) {
    return CTwoPresets(options, kelvin).Measure();
}

constexpr u32 kPoints = 12;
constexpr float kAround = 1;  ///< kelvin: pixels that are no further from a point's temperature make it
constexpr measure::SFitOptions kFit = {.lowWave = 8, .highWave = 12, .order = 4};

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
    objects.Get<reduce::CRCalReduceObject>(-1, true)->cal = ReadUserCalibration(path.string());
    objects.Get<reduce::CRCalReduceObject>(-1, true)->valid = true;

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

/// Fits the calibration to the frame's corrected counts, as if the scene were of black bodies with nothing between them
/// and the camera: what it learns so includes their emissivity and the air. Writes it to `path` and measures the whole
/// frame by what is read back from there.
SUserCalibrationDemo CalibrateAndMeasure(const std::filesystem::path& path, SDemoFrame& frame,
                                         std::span<const float> kelvin, const SDemoOptions& options) {
    const measure::SCalibrationFit fit = measure::FitCalibration(Points(frame, kelvin), kFit);
    const measure::SPresetFit& preset = fit.presets.front();
    Write(path, fit.calibration, options.overwrite);
    return {static_cast<u32>(preset.points.size()), kFit.order, preset.Rms(), preset.Largest(),
            Measure(path, frame, kelvin, options.scale)};
}

}  // namespace

int RunDemo(const SDemoOptions& options) {
    if (options.width < kDemoLeastSide || options.height < kDemoLeastSide) {
        throw UsageFault(fmt::format("the demo needs frames of {0} x {0} pixels or more", kDemoLeastSide));
    }
    MakeDirectory(options.directory);
    const std::vector<float> kelvin = RenderScene(options.width, options.height, kFrame);
    SDemoReport report{.options = options};
    for (const SForm& form : kForms) {
        report.frames.push_back(Measure(form, options, kelvin));
        SDemoFrame& frame = report.frames.back();
        frame.agreement = CompareWithScene(frame.values, frame.status, frame.correction->mask, kelvin, options.scale);
        report.files.push_back(options.directory / fmt::format("motor-{}.krt", form.form));
        frame.recorded = RecordAndMeasure(report.files.back(), FormatOf(form, options), frame, kelvin, options);
    }
    SDemoFrame& first = report.frames.front();
    report.figures = Figures(first, options);
    report.presets = MeasurePresets(options, kelvin);
    report.files.push_back(options.directory / "motor-user-calibration.json");
    report.user = CalibrateAndMeasure(report.files.back(), first, kelvin, options);
    for (const auto& picture : WritePictures(report)) report.files.push_back(picture);
    PrintReport(report);
    return report.Agrees() ? ExitDone : ExitBadData;
}

}  // namespace ovix::app
