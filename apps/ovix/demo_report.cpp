#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "apps/ovix/demo.h"
#include "apps/ovix/facts/scene_json.h"
#include "apps/ovix/output/frame_writer.h"
#include "apps/ovix/scene.h"
#include "apps/ovix/text/console.h"
#include "apps/ovix/text/text_table.h"
#include "apps/ovix/units.h"

namespace ovix::app {
namespace {

using reduce::CReduceObjectArray;

/// Looking objects up is no change, though the array's operation could make one.
template <class Object>
TSharedPtr<Object> Find(const SDemoFrame& frame, int preset) {
    return const_cast<CReduceObjectArray&>(frame.objects).Get<Object>(preset, false);
}

std::string Degrees(double kelvin, ETempType scale) {
    const double tenths = std::round(10 * CMath::ConvertTemperature(kelvin, Kelvin, scale));
    return fmt::format("{:.1f}", tenths / 10 + 0.0);  // no minus before a zero
}

/// The values that the temperatures rest on, each with its unit in its key.
Json DescribeScene(const SDemoFrame& frame) {
    const auto scene = Find<reduce::CObjectParametersReduceObject>(frame, -1);
    return scene ? SceneJson(*scene) : Json::object();
}

/// The same for a reader, in one line.
std::string CaptionOf(const SDemoFrame& frame, ETempType scale) {
    const auto scene = Find<reduce::CObjectParametersReduceObject>(frame, -1);
    if (!scene) return {};
    return fmt::format("{}  ·  emissivity {:.2f}  ·  distance {:.1f} m  ·  reflected {} {}", frame.pixelType,
                       scene->emissivity, scene->distance, Degrees(scene->reflectedTemp, scale),
                       UnitText(TemperatureFactory, scale).symbol);
}

/// A heading, a line under it and the content.
std::string Section(const char* heading, const std::string& text) { return fmt::format("\n{}\n\n{}", heading, text); }

CTextTable MetadataTable(const SDemoFrame& frame, const SDemoOptions& options) {
    const std::string degrees = UnitText(TemperatureFactory, options.scale).symbol;
    CTextTable table({{"Field", CTextTable::Left}, {"Value", CTextTable::Left}, {"Unit or kind", CTextTable::Left}});
    table.Row({"Pixel type", frame.pixelType, ""});
    table.Row({"Image", fmt::format("{} x {}", options.width, options.height), "pixels"});
    if (const auto info = Find<reduce::CFrameInfoReduceObject>(frame, 0)) {
        for (u32 i = 0; i < info->NumEntries(); ++i) {
            table.Row({info->GetNameAt(i).GetUTF8(), info->GetValueAt(i).GetUTF8(), info->GetUnitAt(i).GetUTF8()});
        }
    }
    if (const auto scene = Find<reduce::CObjectParametersReduceObject>(frame, -1)) {
        table.Row({"Emissivity", fmt::format("{:.2f}", scene->emissivity), ""});
        table.Row({"Distance", fmt::format("{:.1f}", scene->distance), "m"});
        table.Row({"Reflected temperature", Degrees(scene->reflectedTemp, options.scale), degrees});
        table.Row({"Atmosphere temperature", Degrees(scene->atmosphereTemp, options.scale), degrees});
        table.Row({"Relative humidity", fmt::format("{:.0f}", 100 * scene->relativeHumidity), "%"});
        table.Row({"Atmosphere transmission", fmt::format("{:.4f}", scene->estimatedAtmosphereTrans), ""});
    }
    if (const auto calibration = Find<reduce::CCurlewFactoryCalReduceObject>(frame, 0)) {
        table.Row({"Calibrated from", Degrees(calibration->lowerTemp, options.scale), degrees});
        table.Row({"Calibrated to", Degrees(calibration->upperTemp, options.scale), degrees});
    }
    return table;
}

/// Digits behind the point are those that a camera's noise leaves meaningful.
CTextTable FiguresTable(const SDemoReport& report) {
    const SUnitText unit = UnitText(TemperatureFactory, report.options.scale);
    const auto of = [&](const char* name) { return fmt::format("{} ({})", name, unit.symbol); };
    CTextTable table({{"Region", CTextTable::Left},
                      {"Pixels", CTextTable::Right},
                      {of("Minimum"), CTextTable::Right},
                      {"at x, y", CTextTable::Right},
                      {of("Maximum"), CTextTable::Right},
                      {"at x, y", CTextTable::Right},
                      {of("Mean"), CTextTable::Right},
                      {fmt::format("Deviation ({})", unit.difference), CTextTable::Right}});
    const auto value = [](double v) { return fmt::format("{:.2f}", v); };
    const auto place = [](SPoint p) { return fmt::format("{}, {}", p.x, p.y); };
    for (const auto& [name, s] : report.figures) {
        table.Row({name, fmt::format("{}", s.count), value(s.minimum), place(s.minimumPosition), value(s.maximum),
                   place(s.maximumPosition), value(s.mean), value(s.standardDeviation)});
    }
    return table;
}

/// A table whose rows say what was measured, a fact about it, and its agreement.
class CAgreementTable {
  public:
    CAgreementTable(const char* what, CTextTable::SColumn fact)
        : table_({{what, CTextTable::Left},
                  std::move(fact),
                  {"Good (px)", CTextTable::Right},
                  {"Greatest (K)", CTextTable::Right},
                  {"RMS (K)", CTextTable::Right},
                  {"Replaced (px)", CTextTable::Right},
                  {"Greatest (K)", CTextTable::Right},
                  {"Flagged (px)", CTextTable::Right}}) {}
    void Row(const std::string& what, const std::string& fact, const SAgreement& a) {
        table_.Row({what, fact, fmt::format("{}", a.good), fmt::format("{:.4f}", a.max), fmt::format("{:.4f}", a.rms),
                    fmt::format("{}", a.replaced), fmt::format("{:.2f}", a.replacedMax), fmt::format("{}", a.flagged)});
    }
    std::string Text() const { return table_.Text(); }

  private:
    CTextTable table_;
};

CAgreementTable AgreementTable(const SDemoReport& report) {
    CAgreementTable table("Form", {"Frame (bytes)", CTextTable::Right});
    for (const SDemoFrame& frame : report.frames) {
        const std::string bytes = fmt::format("{}", frame.raw.size());
        table.Row(frame.form, bytes, frame.agreement);
        table.Row(frame.form + ", recorded", bytes, frame.recorded);
    }
    return table;
}

std::string PresetText(const SPresetDemo& demo, ETempType scale) {
    const auto range = [&](float low, float high) {
        const auto degrees = [&](float celsius) { return CMath::ConvertTemperature(celsius, Celsius, scale); };
        return fmt::format("{:.0f} to {:.0f}", degrees(low), degrees(high));
    };
    CAgreementTable table("Integration time",
                          {fmt::format("Calibrated ({})", UnitText(TemperatureFactory, scale).symbol)});
    for (std::size_t preset = 0; preset < demo.presets.size(); ++preset) {
        const SPresetAlone& alone = demo.presets[preset];
        table.Row(fmt::format("{} ms (preset {})", alone.milliseconds, preset), range(alone.low, alone.high),
                  alone.agreement);
    }
    table.Row("merged", range(demo.presets.front().low, demo.presets.back().high), demo.merged);
    std::string shares;
    for (std::size_t preset = 0; preset < demo.presets.size(); ++preset)
        shares +=
            fmt::format("{}{:.1f} % from preset {}", preset ? ", " : "", 100 * demo.presets[preset].share, preset);
    return table.Text() +
           fmt::format(
               "\nAlone, the longer one saturates in the hot bearing and the shorter one cannot measure what is "
               "cool. The merged frame takes {}.\n",
               shares);
}

Json Document(const SAgreement& agreement) {
    return {{"goodPixels", agreement.good},
            {"maximumDifferenceKelvin", agreement.max},
            {"rmsDifferenceKelvin", agreement.rms},
            {"replacedPixels", agreement.replaced},
            {"flaggedPixels", agreement.flagged}};
}

Json PresetDocument(const SPresetDemo& demo) {
    Json list = Json::array();
    for (const SPresetAlone& alone : demo.presets) {
        Json json = Document(alone.agreement);
        json.update({{"integrationMilliseconds", alone.milliseconds},
                     {"lowCelsius", alone.low},
                     {"highCelsius", alone.high},
                     {"shareOfMerged", alone.share}});
        list.push_back(std::move(json));
    }
    Json json = Document(demo.merged);
    json["agrees"] = demo.merged.Holds();
    return {{"presets", std::move(list)}, {"merged", std::move(json)}};
}

std::string UserText(const SUserCalibrationDemo& demo, const SAgreement& factory) {
    CAgreementTable table("Calibration", {"From"});
    table.Row("factory", "the frame", factory);
    table.Row("user", fmt::format("{} points", demo.points), demo.agreement);
    return table.Text() + fmt::format(
                              "\nThe polynomial of order {} from counts to radiance leaves residuals of {:.3f} K "
                              "RMS, {:.3f} K at most.\n",
                              demo.order, demo.rms, demo.largest);
}

Json UserDocument(const SUserCalibrationDemo& demo) {
    Json json = Document(demo.agreement);
    json.update({{"points", demo.points},
                 {"order", demo.order},
                 {"rmsResidualKelvin", demo.rms},
                 {"largestResidualKelvin", demo.largest},
                 {"agrees", demo.agreement.Holds()}});
    return json;
}

std::string TextOf(const SDemoReport& report) {
    const SDemoFrame& first = report.frames.front();
    std::string text =
        Section("The frame as the camera sent it", MetadataTable(first, report.options).Text()).substr(1);
    text += Section("Statistics", FiguresTable(report).Text());
    text += Section("Measured temperatures against those of the scene", AgreementTable(report).Text());
    text += Section("Two integration times, merged by preset", PresetText(report.presets, report.options.scale));
    text += Section("A user calibration, fitted to the scene", UserText(report.user, first.agreement));
    text +=
        fmt::format("\n{} of a form, of the merged frame or by the user calibration is {} K or more from the scene.\n",
                    report.Agrees() ? "All agree: no good pixel" : "They do not agree: a good pixel", kDemoLimitKelvin);
    text += "Replaced pixels stand in for bad ones and show what a neighbour sees.\n";
    text += "\nWritten\n\n";
    for (const auto& file : report.files) text += file.string() + '\n';
    return text;
}

Json JsonOf(const SDemoReport& report) {
    const SUnitText unit = UnitText(TemperatureFactory, report.options.scale);
    Json metadata = Json::object();
    if (const auto info = Find<reduce::CFrameInfoReduceObject>(report.frames.front(), 0)) {
        for (u32 i = 0; i < info->NumEntries(); ++i) {
            metadata[info->GetNameAt(i).GetUTF8()] = info->GetValueAt(i).GetUTF8();
        }
    }
    Json figures = Json::array();
    for (const auto& [name, s] : report.figures) {
        figures.push_back({{"region", name},
                           {"pixels", s.count},
                           {"minimum", s.minimum},
                           {"maximum", s.maximum},
                           {"mean", s.mean},
                           {"standardDeviation", s.standardDeviation}});
    }
    Json frames = Json::array();
    for (const SDemoFrame& frame : report.frames) {
        const SAgreement& a = frame.agreement;
        frames.push_back({{"form", frame.form},
                          {"pixelType", frame.pixelType},
                          {"bytes", frame.raw.size()},
                          {"status", CountStatus(frame.status)},
                          {"goodPixels", a.good},
                          {"maximumDifferenceKelvin", a.max},
                          {"rmsDifferenceKelvin", a.rms},
                          {"replacedPixels", a.replaced},
                          {"recordedMaximumDifferenceKelvin", frame.recorded.max},
                          {"agrees", a.Holds() && frame.recorded.Holds()}});
    }
    Json files = Json::array();
    for (const auto& file : report.files) files.push_back(file.string());
    return {{"schema", kSchemaVersion},
            {"unit", unit.symbol},
            {"deviationUnit", unit.difference},
            {"metadata", metadata},
            {"parameters", DescribeScene(report.frames.front())},
            {"statistics", figures},
            {"frames", frames},
            {"presets", PresetDocument(report.presets)},
            {"userCalibration", UserDocument(report.user)},
            {"files", files}};
}

}  // namespace

bool SDemoReport::Agrees() const {
    return presets.merged.Holds() && user.agreement.Holds() &&
           std::all_of(frames.begin(), frames.end(),
                       [](const SDemoFrame& frame) { return frame.agreement.Holds() && frame.recorded.Holds(); });
}

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
        .frame = 0, .values = frame.values, .status = frame.status, .caption = CaptionOf(frame, options.scale)};
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

void PrintReport(const SDemoReport& report) {
    if (report.options.json) {
        PrintJson(JsonOf(report));
    } else {
        Print(TextOf(report));
    }
}

}  // namespace ovix::app
