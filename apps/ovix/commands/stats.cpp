#include <CLI/CLI.hpp>
#include <algorithm>

#include "apps/ovix/cli/measure_arguments.h"
#include "apps/ovix/cli/measure_run.h"
#include "apps/ovix/cli/source_arguments.h"
#include "apps/ovix/cli/values.h"
#include "apps/ovix/commands/command.h"
#include "apps/ovix/commands/stats_printer.h"
#include "apps/ovix/facts/scene_json.h"
#include "apps/ovix/text_table.h"

namespace ovix::app {

namespace {

class CStatsCommand final : public ICommand {
  public:
    const char* Verb() const override { return "stats"; }
    const char* Brief() const override { return "figures of frames and regions"; }
    const char* Examples() const override {
        return "ovix stats dump.raw --pixel-type \"K410 IR (GigE)\" --size 640x480 --roi bearing=400,200,60,60\n"
               "ovix stats dump.raw --pixel-type \"K410 IR (GigE)\" --size 640x480 --frames 0-19x2 --scale F --csv";
    }
    void AddOptions(CLI::App& verb) override {
        source_.Add(verb);
        measure_.Add(verb);
        CMeasureRun::AddOption(verb, mergePresets_);
        const char* group = "Output";
        verb.add_option("--roi", regions_, "a region: x,y,w,h or name=x,y,w,h (else the whole frame)")
            ->type_name("REGION")
            ->allow_extra_args(false)
            ->group(group);
        auto* csv = verb.add_flag("--csv", csv_, "one line of values a region and frame")->group(group);
        verb.add_flag("--json", json_, "one JSON document")->group(group)->excludes(csv);
    }

    EExit Run() override {
        const measure::SMeasureOptions options = measure_.Options();
        const measure::CSource source = source_.Open();
        const u16 width = source.Format().width;
        const u16 height = source.Format().height;
        std::vector<SRegion> regions = ParseRegions(regions_, width, height);
        if (regions.empty()) regions.push_back({.name = "frame", .width = width, .height = height});

        const measure::CMeasurement measurement(source, options);
        CMeasureRun run(measurement, source_, mergePresets_);
        const auto printer = json_ ? MakeJsonPrinter() : csv_ ? MakeCsvPrinter() : MakeTablePrinter();
        bool begun = false;
        const auto end = [&](bool whole) {
            if (begun) printer->End({run.Skipped(), whole && run.Exit() != ExitSkipped, source.Findings()});
        };
        try {
            run.Run([&](const measure::CFrame& frame) { return RowsOf(frame, regions); },
                    [&](const std::vector<SStatsRow>& rows, const measure::CFrame& frame) {
                        if (!begun) printer->Begin(Head(measurement, frame, regions));
                        begun = true;
                        for (const SStatsRow& row : rows) printer->Row(row);
                    });
        } catch (...) {
            end(false);
            throw;
        }
        end(true);
        return run.Exit();
    }

  private:
    static std::vector<SStatsRow> RowsOf(const measure::CFrame& frame, const std::vector<SRegion>& regions) {
        std::vector<SStatsRow> rows;
        for (const SRegion& region : regions)
            rows.push_back({.frame = frame.number, .region = region, .figures = frame.Statistics(region)});
        return rows;
    }
    /// What holds for all of the run, by its first frame.
    static SStatsHead Head(const measure::CMeasurement& measurement, const measure::CFrame& frame,
                           const std::vector<SRegion>& regions) {
        SStatsHead head{.unit = frame.unit,
                        .text = UnitText(frame.unit, frame.scale),
                        .parameters = ParametersJson(measurement, frame),
                        .lastFrame = measurement.Source().Count().value_or(1) - 1};
        for (const SRegion& region : regions) head.longestName = std::max(head.longestName, TextWidth(region.name));
        return head;
    }

    CSourceArguments source_;
    CMeasureArguments measure_;
    std::vector<std::string> regions_;
    bool mergePresets_ = false;
    bool csv_ = false;
    bool json_ = false;
};

}  // namespace

std::unique_ptr<ICommand> MakeStatsCommand() { return std::make_unique<CStatsCommand>(); }

}  // namespace ovix::app
