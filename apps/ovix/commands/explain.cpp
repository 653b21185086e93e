#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cmath>

#include "apps/ovix/cli/console.h"
#include "apps/ovix/cli/measure_arguments.h"
#include "apps/ovix/cli/number_text.h"
#include "apps/ovix/cli/source_arguments.h"
#include "apps/ovix/cli/values.h"
#include "apps/ovix/commands/command.h"
#include "apps/ovix/commands/value_section.h"
#include "apps/ovix/pipeline/pixel_walk.h"
#include "apps/ovix/pipeline/scene_json.h"
#include "apps/ovix/status_flags.h"
#include "apps/ovix/text_table.h"
#include "apps/ovix/units.h"

namespace ovix::app {

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

double Change(const SWalkStep& from, const SWalkStep& to) {
    return ShortestDouble(to.value) - ShortestDouble(from.value);
}

/// A way, and beside it the one with another scene if that was asked for.
struct SExplained {
    SPixelWalk walk;
    std::optional<SPixelWalk> changed;
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
        std::vector<std::string> row{step.name, ShownValue(step.value, step.unit), UnitText(step.unit, scale).symbol,
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
        const SSceneParameter& value = walk.scene[i];
        std::vector<std::string> row{value.name, fmt::format("{}", value.value), value.unit, value.from};
        if (changed) {
            const SSceneParameter& other = changed->scene[i];
            row.insert(row.end(), {fmt::format("{}", other.value), other.from});
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
        Json entry = {{"step", step.name},
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
        const SSceneParameter& value = walk.scene[i];
        Json entry = {
            {"name", value.name}, {"value", ShortestDouble(value.value)}, {"unit", value.unit}, {"from", value.from}};
        if (changed) {
            const SSceneParameter& other = changed->scene[i];
            entry["changed"] = {{"value", ShortestDouble(other.value)}, {"from", other.from}};
        }
        document["parameters"].push_back(std::move(entry));
    }
    document["calibration"] = walk.calibration;
    if (!walk.calibration.is_null()) document["calibrationFrom"] = walk.calibrationFrom;
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
        const SMeasureOptions options = measure_.Options();
        CMeasureArguments other = measure_;
        for (const std::string& text : set_) other.SetScene(text);
        const SMeasureOptions changed = other.Options();

        const auto source = source_.Open();
        const u64 frame = CFrameSelection(frame_, "--frame").OneOf(source->Count());
        const auto [x, y] = ParsePoint("--at", at_, source->Format().width, source->Format().height);
        const u32 pixel = u32{y} * source->Format().width + x;
        SExplained found{.walk = WalkPixel(*source, options, frame, pixel), .changed = {}, .scale = options.scale};
        if (!set_.empty()) found.changed = WalkPixel(*source, changed, frame, pixel);
        if (json_) {
            Json document = {
                {"schema", kSchemaVersion}, {"file", source->Name()}, {"frame", frame}, {"x", x}, {"y", y}};
            document.update(found.Document());
            PrintJson(document);
        } else {
            Print(fmt::format("{}, frame {}, pixel ({}, {}), preset {}\n\n", source->Name(), frame, x, y,
                              found.walk.preset) +
                  found.Steps() + '\n' + found.Parameters() +
                  ValueSection(fmt::format("Calibration, from the {}", found.walk.calibrationFrom).c_str(),
                               found.walk.calibration));
        }
        return ExitDone;
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
