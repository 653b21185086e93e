#include "apps/ovix/report/report_facts.h"

#include <fmt/format.h>

#include <array>

#include "apps/ovix/facts/findings.h"
#include "apps/ovix/facts/provenance.h"
#include "apps/ovix/facts/scene_json.h"
#include "apps/ovix/facts/value_section.h"

namespace ovix::app {

namespace {

using Rows = std::vector<std::vector<std::string>>;

Rows PackingRows(const SReport& report) {
    const auto& [bin, step] = report.packing;
    const std::string& unit = report.unit.difference;
    const std::string binned = fmt::format("{0} x {0}: mean of those without a flag, all flags together", bin);
    return {{"values are multiples of", fmt::format("{} {}", step, unit)},
            {"largest rounding", fmt::format("{:.3g} {}", report.figures.largestRounding, unit)},
            {"pixels made one", bin == 1 ? "none" : binned},
            {"pixels that are no number", fmt::format("{}", report.figures.gaps)}};
}

Rows ParameterRows(std::span<const measure::SParameter> parameters) {
    Rows rows;
    for (const measure::SParameter& one : parameters) {
        const char* space = one.unit.empty() ? "" : " ";
        const std::string& name =
            one.name.empty() ? one.key : one.name;  // a calibration names its values by keys alone
        rows.push_back({name, fmt::format("{:.9g}{}{}", one.value, space, one.unit), OriginWord(one.origin)});
    }
    return rows;
}

Rows CalibrationRows(const measure::SCalibrationFacts& facts) {
    if (facts.model.empty()) return {};
    Rows rows{{"model", facts.model, OriginWord(facts.origin)}};
    for (auto& row : ParameterRows(facts.values)) rows.push_back(std::move(row));
    return rows;
}

SFactSection FindingsSection(std::span<const measure::SFinding> findings) {
    if (findings.empty()) return {"Findings", {}, {{"of the source", "none"}}};
    Rows rows;
    for (const Json& finding : FindingsJson(findings)) {
        std::string place;
        for (const char* key : {"frame", "block", "offset"}) {
            if (finding.contains(key)) place += fmt::format("{} {} ", key, ShownJson(finding[key]));
        }
        std::string what = ShownJson(finding["what"]);
        for (const char* key : {"expected", "found"}) {
            const std::string text = ShownJson(finding[key]);
            if (!text.empty()) what += fmt::format("{}{} {}", what.empty() ? "" : ", ", key, text);
        }
        rows.push_back({ShownJson(finding["id"]), ShownJson(finding["weight"]), place, what});
    }
    return {"Findings", {"finding", "weight", "place", "what"}, std::move(rows)};
}

Rows ProvenanceRows(const SReport& report, const measure::CMeasurement& measurement, const measure::CFrame& first,
                    u64 skipped) {
    const measure::CSource& source = measurement.Source();
    const measure::SFrameFormat& format = source.Format();
    Rows rows{{"file", source.Name()},
              {"pixel type", format.pixelTypeName},
              {"decoder", format.filter},
              {"unit", ShownJson(ParametersJson(measurement, first)["unit"])}};
    for (const measure::SCorrectionFiles& files : measurement.Options().corrections)
        rows.push_back({"correction tables", files.stem});
    if (source.Count()) rows.push_back({"frames in the file", fmt::format("{}", *source.Count())});
    rows.push_back({"frames in this page", fmt::format("{}", report.frames.size())});
    rows.push_back({"frames skipped", fmt::format("{}", skipped)});
    const Json origin = ProvenanceJson(source, measurement.Options());
    for (const Json& block : origin["input"].value("metadata", Json::array()))
        rows.push_back({"CRC-32 of " + ShownJson(block["block"]), ShownJson(block["crc32"])});
    const auto words = origin["command"].get<std::vector<std::string>>();
    if (!words.empty()) rows.push_back({"command line", fmt::format("{}", fmt::join(words, " "))});
    rows.push_back({"written by", "ovix " OVIX_VERSION});
    return rows;
}

}  // namespace

std::vector<SFactSection> ReportFacts(const SReport& report, const measure::CMeasurement& measurement,
                                      const measure::CFrame& first, u64 skipped) {
    reduce::CReduceObjectArray& objects = first.Objects();
    const u8 preset = first.preset.value_or(0);
    std::vector<SFactSection> facts{
        {"What was rounded", {}, PackingRows(report)},
        {"Scene", {"value of", "is", "by"}, ParameterRows(first.Parameters())},
        {"Factory calibration",
         {"value of", "is", "by"},
         CalibrationRows(measure::FactoryCalibration(objects, preset))},
        {"User calibration", {"value of", "is", "by"}, CalibrationRows(measure::UserCalibration(objects, preset))},
        FindingsSection(measurement.Source().Findings()),
        {"Provenance", {}, ProvenanceRows(report, measurement, first, skipped)},
    };
    std::erase_if(facts, [](const SFactSection& section) { return section.rows.empty(); });
    return facts;
}

}  // namespace ovix::app
