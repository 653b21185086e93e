#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>

#include "apps/ovix/cli/many_inputs.h"
#include "apps/ovix/cli/measure_arguments.h"
#include "apps/ovix/cli/measure_run.h"
#include "apps/ovix/cli/regions.h"
#include "apps/ovix/commands/command.h"
#include "apps/ovix/commands/stats_printer.h"
#include "apps/ovix/facts/scene_json.h"
#include "apps/ovix/text/text_table.h"
#include "apps/ovix/text/values.h"

namespace ovix::app {

namespace {

std::vector<double> ParsePercents(const std::string& text) {
    std::vector<double> percents;
    for (const std::string_view part : SplitText(text, ','))
        percents.push_back(ShortestDouble(ParseWithin("--percentiles", std::string(part), 0, 100)));
    return percents;
}

class CStatsCommand final : public ICommand {
  public:
    const char* Verb() const override { return "stats"; }
    const char* Brief() const override { return "figures of frames and regions, distributions, profiles"; }
    const char* Examples() const override {
        return "ovix stats dump.raw --pixel-type \"K410 IR (GigE)\" --size 640x480 --roi bearing=400,200,60,60\n"
               "ovix stats run.krt --good-only --roi shaft=circle:320,240,30 --percentiles 1,50,99 --csv\n"
               "ovix stats run.krt --frames 0-19x10 --profile 10,240,629,240 --csv -o profiles.csv\n"
               "ls run*.krt | ovix stats --files-from - --json";
    }
    bool ShowsStatus() const override { return true; }
    void AddOptions(CLI::App& verb) override {
        source_.Add(verb, EInputs::Many);
        measure_.Add(verb);
        CMeasureRun::AddOption(verb, mergePresets_);
        const char* group = "Output";
        regions_.Add(verb, group);
        const auto add = [&](const char* name, std::string& value, const char* type, const char* help) {
            return verb.add_option(name, value, help)->type_name(type)->group(group);
        };
        auto* good =
            verb.add_flag("--good-only", goodOnly_,
                          "figures of pixels without any flag alone (else of all that count; CSV and JSON have "
                          "both)");
        good->group(group);
        auto* percents = add("--percentiles", percentiles_, "P,...", "percentiles from 0 to 100, as in 5,50,95");
        auto* bins =
            add("--histogram", histogram_, "BINS[,LO,HI]",
                "in JSON, and with its limits in CSV: how many values lie in each step, from the lowest to the "
                "highest value or from LO to HI");
        verb.add_option("--profile", profiles_,
                        "the values of the pixels along a line instead of figures: x0,y0,x1,y1 or name=x0,y0,x1,y1")
            ->type_name("LINE")
            ->allow_extra_args(false)
            ->group(group)
            ->excludes(good)
            ->excludes(percents)
            ->excludes(bins)
            ->excludes(verb.get_option("--roi"))
            ->excludes(verb.get_option("--regions"));
        auto* csv = verb.add_flag("--csv", csv_, "one line of values a region and frame, or a pixel of a profile");
        csv->group(group);
        verb.add_flag("--json", json_, "one JSON document")->group(group)->excludes(csv);
        auto* output =
            add("-o,--output", output_, "FILE",
                "write what --csv or --json says to a file; beside out.csv, out.csv.json says what its values rest on");
        verb.add_flag("--overwrite", overwrite_, "replace files that exist")->group(group)->needs(output);
    }

    EExit Run() override {
        options_ = measure_.Options();
        wish_ = Wish();
        const std::vector<CSourceArguments> inputs = source_.Each();
        const auto printer = Printer();
        const std::size_t count = inputs.size();
        bool ended = false;
        if (count > 1) printer->Open(count);
        const EExit worst = ForEachInput(
            inputs,
            [&](const CSourceArguments& input) {
                ended = false;
                return One(input, *printer, ended);
            },
            [&](const CSourceArguments& input, const CFault& fault) {
                if (!ended) printer->Failed(input.File(), fault);
            });
        printer->Close();
        return worst;
    }

  private:
    std::unique_ptr<IStatsPrinter> Printer() const {
        if (!output_.empty() && !csv_ && !json_)
            throw UsageFault("--output: goes with --csv or --json; a table goes to the standard output");
        if (output_.find("{stem}") != output_.npos)
            throw UsageFault("--output: the rows of all inputs go to one file, which bears no {stem}");
        if (output_.empty() || output_ == "-")
            return json_ ? MakeJsonPrinter(wish_) : csv_ ? MakeCsvPrinter(wish_) : MakeTablePrinter(wish_);
        return MakeFilePrinter(wish_, json_, output_, overwrite_);
    }
    SStatsWish Wish() const {
        SStatsWish wish{.pixels = goodOnly_ ? measure::EPixels::Good : measure::EPixels::Counted,
                        .profile = !profiles_.empty(),
                        .ofGood = csv_ || json_};
        if (!percentiles_.empty()) wish.percents = ParsePercents(percentiles_);
        if (histogram_.empty()) return wish;
        constexpr u64 kMostBins = 65536;
        const std::size_t comma = histogram_.find(',');
        wish.bins = ParseNumber<u64>(std::string_view(histogram_).substr(0, comma)).value_or(0);
        if (!wish.bins || wish.bins > kMostBins)
            throw UsageFault("--histogram: expected 1 to 65536 steps, found \"" + histogram_ + "\"");
        if (comma != std::string::npos) wish.binLimits = ParseRange("--histogram", histogram_.substr(comma + 1));
        if (!json_ && !(csv_ && wish.binLimits))
            throw UsageFault("--histogram: goes with --json, or as BINS,LO,HI with --csv");
        return wish;
    }

    std::vector<measure::CPixelSet> Regions(u16 width, u16 height) const {
        if (profiles_.empty()) return regions_.Of(width, height);
        return PixelsOf(ParseLines("--profile", profiles_), width, height);
    }

    /// Sets `ended` where the printer was told of this input's end.
    EExit One(const CSourceArguments& input, IStatsPrinter& printer, bool& ended) const {
        const measure::CSource source = input.Open();
        const std::vector<measure::CPixelSet> regions = Regions(source.Format().width, source.Format().height);
        const measure::CMeasurement measurement(source, options_);
        measure_.RefuseIdle(measurement, input.Frames(source));
        CMeasureRun run(measurement, input, mergePresets_);
        bool begun = false;
        const auto end = [&](bool whole) {
            if (begun) printer.End({run.Skipped(), whole && run.Exit() != ExitSkipped, source.Findings()});
            ended = begun;
        };
        try {
            run.Run([&](const measure::CFrame& frame) { return RowsOf(source.Name(), frame, regions); },
                    [&](const std::vector<SStatsRow>& rows, const measure::CFrame& frame) {
                        if (!begun) printer.Begin(Head(measurement, frame, regions));
                        begun = true;
                        for (const SStatsRow& row : rows) printer.Row(row);
                    });
        } catch (...) {
            end(false);
            throw;
        }
        end(true);
        return run.Exit();
    }
    std::vector<SStatsRow> RowsOf(const std::string& file, const measure::CFrame& frame,
                                  const std::vector<measure::CPixelSet>& regions) const {
        std::vector<SStatsRow> rows;
        rows.reserve(regions.size());
        for (const measure::CPixelSet& region : regions) rows.push_back(RowOf(file, frame, region, wish_));
        return rows;
    }
    /// What holds for all of the run, by its first frame.
    SStatsHead Head(const measure::CMeasurement& measurement, const measure::CFrame& frame,
                    const std::vector<measure::CPixelSet>& regions) const {
        const measure::CSource& source = measurement.Source();
        SStatsHead head{.file = source.Name(),
                        .unit = frame.unit,
                        .text = UnitText(frame.unit, frame.scale),
                        .parameters = ParametersJson(measurement, frame),
                        .lastFrame = source.Count().value_or(1) - 1,
                        .regions = regions.size()};
        for (const measure::CPixelSet& region : regions)
            head.longestName = std::max(head.longestName, TextWidth(region.Shape().name));
        return head;
    }

    CSourceArguments source_;
    CMeasureArguments measure_;
    CRegionArguments regions_;
    std::vector<std::string> profiles_;
    std::string percentiles_;
    std::string histogram_;
    std::string output_;
    bool overwrite_ = false;
    bool goodOnly_ = false;
    bool mergePresets_ = false;
    bool csv_ = false;
    bool json_ = false;
    measure::SMeasureOptions options_;  ///< as `wish_`, set by `Run` ahead of all else
    SStatsWish wish_;
};

}  // namespace

std::unique_ptr<ICommand> MakeStatsCommand() { return std::make_unique<CStatsCommand>(); }

}  // namespace ovix::app
