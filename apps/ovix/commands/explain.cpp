#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cmath>

#include "apps/ovix/cli/measure_arguments.h"
#include "apps/ovix/cli/source_arguments.h"
#include "apps/ovix/commands/command.h"
#include "apps/ovix/facts/calibration_json.h"
#include "apps/ovix/facts/findings.h"
#include "apps/ovix/facts/provenance.h"
#include "apps/ovix/facts/scene_json.h"
#include "apps/ovix/facts/value_section.h"
#include "apps/ovix/fault.h"
#include "apps/ovix/status_flags.h"
#include "apps/ovix/text/console.h"
#include "apps/ovix/text/number_text.h"
#include "apps/ovix/text/text_table.h"
#include "apps/ovix/text/values.h"
#include "apps/ovix/units.h"

namespace ovix::app {

using measure::SParameter;
using measure::SWalkStep;

namespace {

std::string StatusText(u8 status) {
    std::string text;
    for (const SStatusFlag& flag : kStatusFlags) {
        if (status & flag.bit) text += (text.empty() ? "" : ", ") + std::string(flag.text);
    }
    return text.empty() ? "good" : text;
}

Json StatusJson(u8 status) {
    Json flags = Json::array();
    for (const SStatusFlag& flag : kStatusFlags) {
        if (status & flag.bit) flags.push_back(flag.key);
    }
    return flags;
}

/// The calibration of the last step, as the files of the tool tell it.
struct SWalk : measure::SPixelWalk {
    Json calibrationJson;
};

SWalk Walk(const measure::CSource& source, const measure::SMeasureOptions& options, const measure::SRawFrame& raw,
           u32 pixel) {
    SWalk walk{measure::WalkPixel(source, options, raw, pixel), {}};
    if (!walk.calibration.model.empty()) walk.calibrationJson = CalibrationJson(walk.calibration);
    return walk;
}

std::string NameOf(const SWalkStep& step) {
    if (step.unit != Counts) return measure::UnitWords(step.unit);
    return step.corrected ? "counts, corrected" : "counts as recorded";
}

double Change(const SWalkStep& from, const SWalkStep& to) {
    return ShortestDouble(to.value) - ShortestDouble(from.value);
}

/// A way, and beside it the one with another scene if that was asked for.
struct SExplained {
    SWalk walk;
    std::optional<SWalk> changed;
    ETempType scale;

    std::string Steps() const;
    std::string Parameters() const;
    Json Document() const;
};

std::string SExplained::Steps() const {
    using Table = CTextTable;
    std::vector<Table::SColumn> columns{{"Step"}, {"Value", Table::Right}, {"Unit"}, {"Status"}};
    if (changed) columns.insert(columns.end(), {{"Changed", Table::Right}, {"Change", Table::Right}, {"Status"}});
    Table table(columns);
    for (std::size_t i = 0; i < walk.steps.size(); ++i) {
        const SWalkStep& step = walk.steps[i];
        std::vector<std::string> row{NameOf(step), ShownValue(step.value, step.unit), UnitText(step.unit, scale).symbol,
                                     StatusText(step.status)};
        if (changed) {
            const SWalkStep& other = changed->steps[i];
            const double change = Change(step, other);
            row.insert(row.end(), {ShownValue(other.value, step.unit),
                                   (change > 0 ? "+" : "") + ShownValue(change, step.unit), StatusText(other.status)});
        }
        table.Row(row);
    }
    return table.Text();
}

std::string SExplained::Parameters() const {
    using Table = CTextTable;
    std::vector<Table::SColumn> columns{{"Parameter"}, {"Value", Table::Right}, {"Unit"}, {"From"}};
    if (changed) columns.insert(columns.end(), {{"Changed", Table::Right}, {"From"}});
    Table table(columns);
    for (std::size_t i = 0; i < walk.scene.size(); ++i) {
        const SParameter& value = walk.scene[i];
        std::vector<std::string> row{value.name, fmt::format("{}", value.value), value.unit, OriginWord(value.origin)};
        if (changed) {
            const SParameter& other = changed->scene[i];
            row.insert(row.end(), {fmt::format("{}", other.value), OriginWord(other.origin)});
        }
        table.Row(row);
    }
    return table.Text();
}

Json SExplained::Document() const {
    Json document = {{"preset", walk.preset}, {"steps", Json::array()}, {"parameters", Json::array()}};
    for (std::size_t i = 0; i < walk.steps.size(); ++i) {
        const SWalkStep& step = walk.steps[i];
        const SUnitText text = UnitText(step.unit, scale);
        Json entry = {{"step", NameOf(step)},
                      {"value", ShortestDouble(step.value)},
                      {"unit", text.symbol},
                      {"status", StatusJson(step.status)}};
        if (changed) {
            const SWalkStep& other = changed->steps[i];
            entry["changed"] = {{"value", ShortestDouble(other.value)},
                                {"status", StatusJson(other.status)},
                                {"change", Change(step, other)},
                                {"changeUnit", text.difference}};
        }
        document["steps"].push_back(std::move(entry));
    }
    for (std::size_t i = 0; i < walk.scene.size(); ++i) {
        const SParameter& value = walk.scene[i];
        Json entry = {
            {"name", value.name}, {"value", value.value}, {"unit", value.unit}, {"from", OriginWord(value.origin)}};
        if (changed) {
            const SParameter& other = changed->scene[i];
            entry["changed"] = {{"value", other.value}, {"from", OriginWord(other.origin)}};
        }
        document["parameters"].push_back(std::move(entry));
    }
    document["calibration"] = walk.calibrationJson;
    if (!walk.calibrationJson.is_null()) document["calibrationFrom"] = OriginWord(walk.calibration.origin);
    return document;
}

class CExplainCommand final : public ICommand {
  public:
    const char* Verb() const override { return "explain"; }
    const char* Brief() const override { return "the way of one pixel from its count to a temperature"; }
    const char* Examples() const override {
        return "ovix explain dump.raw --pixel-type \"K410 IR (GigE)\" --size 640x480 --frame 12 --at 320,240\n"
               "ovix explain dump.raw --pixel-type \"K410 IR (GigE)\" --size 640x480 --at 320,240 "
               "--set emissivity=0.9 --set distance=10";
    }
    bool ShowsStatus() const override { return true; }
    void AddOptions(CLI::App& verb) override {
        source_.Add(verb);
        measure_.Add(verb);
        const char* group = "Pixel";
        verb.add_option("--at", at_, "the pixel, column and row from 0")->type_name("X,Y")->required()->group(group);
        verb.add_option("--frame", frame_, "the frame, from 0, -1 the last (else 0)")
            ->type_name("N")
            ->group(group)
            ->excludes(verb.get_option("--frames"));
        verb.add_option("--set", set_, "show beside it what another value of the scene would change")
            ->type_name("NAME=VALUE")
            ->allow_extra_args(false)
            ->group(group);
        verb.add_flag("--json", json_, "one JSON document instead of tables")->group("Output");
    }

    EExit Run() override {
        const measure::SMeasureOptions options = measure_.Options();
        CMeasureArguments other = measure_;
        for (const std::string& text : set_) other.SetScene(text);
        const measure::SMeasureOptions changed = other.Options();

        if (options.quantity == measure::EQuantity::Counts) measure_.RefuseIdle(Counts);
        if (source_.ChoosesFrames()) throw UsageFault("--frames: has no effect here; --frame names the one frame");
        const measure::CSource source = source_.Open();
        measure::SRawFrame raw;
        CSourceArguments::ReadOne(source, frame_, "--frame", raw);
        const u64 frame = raw.number;
        const auto [x, y] = ParsePoint("--at", at_, source.Format().width, source.Format().height);
        const u32 pixel = u32{y} * source.Format().width + x;
        SExplained found{.walk = Walk(source, options, raw, pixel), .changed = {}, .scale = options.scale};
        if (!set_.empty()) found.changed = Walk(source, changed, raw, pixel);
        if (json_) {
            Json document = {{"schema", kSchemaVersion}, {"file", source.Name()}, {"frame", frame}, {"x", x}, {"y", y}};
            document.update(found.Document());
            document["complete"] = CSourceArguments::Exit(source, 0) == ExitDone;
            document["findings"] = FindingsJson(source.Findings());
            document["provenance"] = ProvenanceJson(source, options);
            PrintJson(document);
        } else {
            Print(
                fmt::format("{}, frame {}, pixel ({}, {}), preset {}\n\n", source.Name(), frame, x, y,
                            found.walk.preset) +
                found.Steps() + '\n' + found.Parameters() +
                ValueSection(fmt::format("Calibration, from the {}", OriginWord(found.walk.calibration.origin)).c_str(),
                             found.walk.calibrationJson));
        }
        return CSourceArguments::Exit(source, 0);
    }

  private:
    CSourceArguments source_;
    CMeasureArguments measure_;
    std::string frame_ = "0";
    std::string at_;
    std::vector<std::string> set_;
    bool json_ = false;
};

}  // namespace

std::unique_ptr<ICommand> MakeExplainCommand() { return std::make_unique<CExplainCommand>(); }

}  // namespace ovix::app
