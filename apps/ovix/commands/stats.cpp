#include <CLI/CLI.hpp>

#include "apps/ovix/cli/measure_arguments.h"
#include "apps/ovix/cli/measure_loop.h"
#include "apps/ovix/cli/source_arguments.h"
#include "apps/ovix/cli/values.h"
#include "apps/ovix/commands/command.h"
#include "apps/ovix/commands/stats_printer.h"
#include "apps/ovix/text_table.h"

namespace ovix::app {

namespace {

class CStatsCommand final : public ICommand {
  public:
    const char* Verb() const override { return "stats"; }
    const char* Brief() const override { return "figures of frames and regions"; }
    const char* Examples() const override {
        return "ovix stats dump.raw --pixel-type \"K410 IR (GigE)\" --size 640x480 --roi bearing=400,200,60,60\n"
               "ovix stats dump.raw --pixel-type \"K410 IR (GigE)\" --size 640x480 --frames 0-999x10 --scale F --csv";
    }
    void AddOptions(CLI::App& verb) override {
        source_.Add(verb);
        measure_.Add(verb);
        CMeasureLoop::AddOption(verb, mergePresets_);
        const char* group = "Output";
        verb.add_option("--roi", regions_, "a region: x,y,w,h or name=x,y,w,h (else the whole frame)")
            ->type_name("REGION")
            ->allow_extra_args(false)
            ->group(group);
        auto* csv = verb.add_flag("--csv", csv_, "one line of values a region and frame")->group(group);
        verb.add_flag("--json", json_, "one JSON document")->group(group)->excludes(csv);
    }

    EExit Run() override {
        const SMeasureOptions options = measure_.Options();
        const auto source = source_.Open();
        CFrameLoop frames = source_.Frames(*source);
        const u16 width = source->Format().width;
        const u16 height = source->Format().height;
        std::vector<SRegion> regions = ParseRegions(regions_, width, height);
        if (regions.empty()) regions.push_back({.name = "frame", .width = width, .height = height});

        CMeasurement measurement(*source, options);
        const auto printer = json_ ? MakeJsonPrinter() : csv_ ? MakeCsvPrinter() : MakeTablePrinter();
        bool begun = false;
        try {
            CMeasureLoop(frames, *source, measurement, mergePresets_).Run([&](const SMeasuredFrame& frame) {
                if (!begun) printer->Begin(Head(measurement, source->Count(), regions));
                begun = true;
                for (const SRegion& region : regions) printer->Row(StatsOf(frame, region, width, height));
            });
        } catch (const CAppError&) {
            if (begun) printer->End(frames.Skipped(), false);
            throw;
        }
        printer->End(frames.Skipped(), true);
        return frames.Exit();
    }

  private:
    static SStatsHead Head(CMeasurement& measurement, u64 frameCount, const std::vector<SRegion>& regions) {
        SStatsHead head{.unit = measurement.Unit(),
                        .text = measurement.UnitText(),
                        .parameters = measurement.Parameters(),
                        .lastFrame = frameCount - 1};
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
