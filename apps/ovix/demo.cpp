#include "apps/ovix/demo.h"

#include <fmt/format.h>

#include "apps/ovix/demo_recording.h"
#include "apps/ovix/demo_report.h"
#include "apps/ovix/demo_require.h"
#include "apps/ovix/output/frame_writer.h"
#include "apps/ovix/pipeline/guarded_decode.h"
#include "apps/ovix/scene.h"
#include "apps/ovix/synth/synth.h"

namespace ovix::app {
namespace {

constexpr u64 kFrame = 0;

struct SForm {
    GUID type;
    const char* form;
};
constexpr SForm kForms[] = {
    {"{3874994E-B76D-45DE-871A-5CF46393B19B}"_guid, "digital"},
    {"{ADA2658E-40C0-4C31-9C44-7667B8169FF6}"_guid, "jpeg-ls"},
    {"{3874994E-B76D-45DE-871A-5CF46393B19B}"_guid, "digital-swapped"},
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

    CGuardedDecode decoder(format);
    const u8 preset = decoder.Decode(bytes, frame.objects);

    reduce::CConvertContext context;
    context.setReduceObjs(&frame.objects);
    Require(context.SetUnit(TemperatureFactory, options.scale), "the unit");
    bool presets[reduce::CConvertContext::PresetCount] = {};
    presets[preset] = true;
    Require(context.Update(presets, reduce::CConvertContext::PresetCount, 0), "the calibration");

    const u32 count = format.PixelCount();
    frame.counts.resize(count);
    const STypedData counts{frame.counts.data(), UInt16};
    Require(context.ApplyNUC(decoder.Pixels(), counts, count), "the correction");
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
    for (const SRegion& region : SceneRegions(options.width, options.height)) {
        reduce::CStats stats;
        Require(reduce::GetStats(stats, values, frame.status.data(), options.width, options.height, region.Area()),
                "the statistics");
        figures.emplace_back(region.name, stats);
    }
    return figures;
}

void MakeDirectory(const std::filesystem::path& directory) {
    std::error_code error;
    std::filesystem::create_directories(directory, error);
    if (error) throw SystemFault(ExitFile, directory.string(), "cannot create the directory", error.value());
}

/// The first frame in every form, and the merged one as a picture.
std::vector<std::filesystem::path> WritePictures(const SDemoReport& report) {
    const SDemoFrame& frame = report.frames.front();
    const SDemoOptions& options = report.options;
    const SSeries series{.width = options.width,
                         .height = options.height,
                         .frames = 1,
                         .unit = UnitText(TemperatureFactory, options.scale),
                         .title = "Motor with a hot bearing and a cool pipe",
                         .parameters = DescribeScene(frame)};
    const SPicture picture{
        .frame = kFrame, .values = frame.values, .status = frame.status, .caption = CaptionOf(frame, options.scale)};
    const SWriteOptions how{
        .overwrite = options.overwrite, .range = std::nullopt, .marks = SceneRegions(options.width, options.height)};
    std::vector<std::filesystem::path> written;
    const auto write = [&](const char* name, const SPicture& shown) {
        written.push_back(options.directory / name);
        const auto writer = MakeFrameWriter(written.back(), series, how);
        writer->Add(shown);
        writer->Finish();
    };
    for (const char* name : {"motor.png", "motor.tif", "motor.npy"}) write(name, picture);
    SPicture merged = picture;
    merged.values = report.presets.values;
    merged.status = report.presets.status;
    merged.caption = "merged from two integration times";
    write("motor-merged.png", merged);
    return written;
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
        const auto agreementOf = [&](const auto& measured) {
            return CompareWithScene(measured.values, measured.status, frame.correction->mask, kelvin, options.scale);
        };
        frame.agreement = agreementOf(frame);
        report.files.push_back(options.directory / fmt::format("motor-{}.krt", form.form));
        frame.recorded = agreementOf(RecordAndMeasure(report.files.back(), FormatOf(form, options), frame, options));
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
