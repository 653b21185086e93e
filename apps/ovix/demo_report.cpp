#include "apps/ovix/demo_report.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "apps/ovix/cli/console.h"
#include "apps/ovix/output/frame_writer.h"
#include "apps/ovix/pipeline/scene_json.h"
#include "apps/ovix/text_table.h"

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

CAgreementTable AgreementTable(const SDemoReport& report) {
    CAgreementTable table("Form", {"Frame (bytes)", CTextTable::Right});
    for (const SDemoFrame& frame : report.frames) {
        const std::string bytes = fmt::format("{}", frame.raw.size());
        table.Row(frame.form, bytes, frame.agreement);
        table.Row(frame.form + ", recorded", bytes, frame.recorded);
    }
    return table;
}

std::string TextOf(const SDemoReport& report) {
    const SDemoFrame& first = report.frames.front();
    std::string text =
        Section("The frame as the camera sent it", MetadataTable(first, report.options).Text()).substr(1);
    text += Section("Statistics", FiguresTable(report).Text());
    text += Section("Measured temperatures against those of the scene", AgreementTable(report).Text());
    text += Section("Two integration times, merged by preset", report.presets.Text(report.options.scale));
    text += Section("A user calibration, fitted to the scene", report.user.Text(first.agreement));
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
            {"presets", report.presets.Document()},
            {"userCalibration", report.user.Document()},
            {"files", files}};
}

}  // namespace

bool SDemoReport::Agrees() const {
    return presets.merged.Holds() && user.agreement.Holds() &&
           std::all_of(frames.begin(), frames.end(),
                       [](const SDemoFrame& frame) { return frame.agreement.Holds() && frame.recorded.Holds(); });
}

Json DescribeScene(const SDemoFrame& frame) {
    const auto scene = Find<reduce::CObjectParametersReduceObject>(frame, -1);
    return scene ? SceneJson(*scene) : Json::object();
}

std::string CaptionOf(const SDemoFrame& frame, ETempType scale) {
    const auto scene = Find<reduce::CObjectParametersReduceObject>(frame, -1);
    if (!scene) return {};
    return fmt::format("{}  ·  emissivity {:.2f}  ·  distance {:.1f} m  ·  reflected {} {}", frame.pixelType,
                       scene->emissivity, scene->distance, Degrees(scene->reflectedTemp, scale),
                       UnitText(TemperatureFactory, scale).symbol);
}

void PrintReport(const SDemoReport& report) {
    if (report.options.json) {
        PrintJson(JsonOf(report));
    } else {
        Print(TextOf(report));
    }
}

}  // namespace ovix::app
