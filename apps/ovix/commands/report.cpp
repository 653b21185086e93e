#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>

#include "apps/ovix/cli/measure_arguments.h"
#include "apps/ovix/cli/measure_run.h"
#include "apps/ovix/cli/output_arguments.h"
#include "apps/ovix/cli/regions.h"
#include "apps/ovix/cli/source_arguments.h"
#include "apps/ovix/commands/command.h"
#include "apps/ovix/facts/findings.h"
#include "apps/ovix/fault.h"
#include "apps/ovix/output/output_file.h"
#include "apps/ovix/report/report_facts.h"
#include "apps/ovix/text/console.h"
#include "apps/ovix/text/values.h"

namespace ovix::app {

namespace {

/// "5M", "800k" or a number of bytes.
u64 ParseBytes(const std::string& option, const std::string& text) {
    const bool mega = text.ends_with('M');
    const bool kilo = text.ends_with('k');
    const auto number = ParseNumber<double>(std::string_view(text).substr(0, text.size() - (mega || kilo ? 1 : 0)));
    if (!number || !(*number > 0 && *number < 1e12))
        throw UsageFault(option + ": expected a size such as 5M, 800k or 5000000, found \"" + text + "\"");
    return static_cast<u64>(*number * (mega ? 1e6 : kilo ? 1e3 : 1));
}

/// A number of an option, or nothing where it was not given.
template <class T>
std::optional<T> ParseLimited(const char* option, const std::string& text, T least, T most) {
    if (text.empty()) return {};
    const auto number = ParseNumber<T>(text);
    if (!number || !(*number >= least && *number <= most))
        throw UsageFault(fmt::format("{}: expected {} to {}, found \"{}\"", option, least, most, text));
    return number;
}

class CReportCommand final : public ICommand {
  public:
    const char* Verb() const override { return "report"; }
    const char* Brief() const override { return "frames as one page for any browser, to move in and to hand on"; }
    const char* Examples() const override {
        return "ovix report run.krt -o run.html\n"
               "ovix report run.krt --frames 0-19x2 --scale F --roi "
               "bearing=385,212,78,78 -o run.html\n"
               "ovix report run.krt --max-size 5M -o run.html";
    }
    void AddOptions(CLI::App& verb) override {
        source_.Add(verb);
        measure_.Add(verb);
        CMeasureRun::AddOption(verb, mergePresets_);
        const char* group = "Output";
        const auto add = [&](const char* name, std::string& value, const char* type, const char* help) {
            return verb.add_option(name, value, help)->type_name(type)->group(group);
        };
        output_.Add(verb, "the page to write, an .html file");
        add("--step", step_, "STEP", "values are rounded to multiples of it, in K or the unit (else 0.05 K, 1 count)");
        add("--bin", bin_, "N", "make N times N pixels one (else 1)");
        add("--max-size", maxSize_, "SIZE",
            "let the page be no larger, by coarser steps first, then by binning: 5M, 800k");
        regions_.Add(verb, group, "a region to begin with");
    }

    EExit Run() override {
        measure::SMeasureOptions options = measure_.Options();
        const ETempType scale = options.scale;
        options.scale = Celsius;  // pages hold degrees Celsius and show any scale
        const measure::CSource source = source_.Open();
        if (!source.IsNumbered())
            throw UsageFault(source.Name() + ": a page looks ahead, which --spool allows for a pipe");
        const measure::SFrameFormat& format = source.Format();
        const SPackingWish wish = Wish(format.width, format.height);
        SReport report{.title = std::filesystem::path(source.Name()).filename().string(),
                       .sourceWidth = format.width,
                       .sourceHeight = format.height};
        for (const measure::CPixelSet& region : regions_.Given(format.width, format.height))
            report.regions.push_back(region.Shape());
        RequireTarget();
        const measure::CMeasurement measurement(source, options);
        CMeasureRun run(measurement, source_, mergePresets_);
        const u64 count = run.Results().value_or(0);

        CPackingChoice choice(wish, format.width, format.height);
        Sample(measurement, choice);
        const measure::CFrame first = run.First();
        report.unit = UnitText(first.unit, first.scale);
        report.subtitle = fmt::format("{}, {} x {} pixels, {} in {}", format.pixelTypeName, format.width, format.height,
                                      report.unit.quantity, report.unit.symbol);
        if (IsTemperature(first.unit)) report.scale = scale;
        u64 found = 0;
        for (const SPacking& packing : choice.Candidates(first.unit, count, CReportPage::FixedSize())) {
            report.packing = packing;
            found = Write(report, run, measurement, first, wish.mostBytes);
            if (wish.mostBytes && found > *wish.mostBytes) continue;
            Report(report, found, run);
            return run.Exit();
        }
        if (!found) found = choice.LeastBytesOfFrame(first.unit) * count + CReportPage::FixedSize();
        throw CAppError(ExitBadData,
                        fmt::format("{}: expected at most {} bytes, found about {} in the coarsest packing "
                                    "that is open: choose fewer --frames, or leave out --step and --bin",
                                    output_.File(), wish.mostBytes.value_or(0), found));
    }

  private:
    /// A target that would not do is refused before frames are measured; one that is never committed leaves nothing.
    void RequireTarget() const { const COutputFile target(output_.File(), output_.Overwrites()); }

    SPackingWish Wish(u16 width, u16 height) const {
        SPackingWish wish;
        wish.step = ParseLimited("--step", step_, 1e-12, 1e12);
        wish.bin = ParseLimited<u32>("--bin", bin_, 1, std::min(width, height));
        if (!maxSize_.empty()) wish.mostBytes = ParseBytes("--max-size", maxSize_);
        return wish;
    }

    /// A few frames from all over the choice; those that will not do are left to the run itself to say.
    void Sample(const measure::CMeasurement& measurement, CPackingChoice& choice) const {
        constexpr u64 kMost = 5;
        const measure::CSource& source = measurement.Source();
        const auto numbers = source_.Frames(source).value_or(measure::CFrameNumbers::All(source.Count().value_or(0)));
        const u64 count = std::min(kMost, numbers.Count());
        measure::CFrame frame;
        for (u64 n = 0; n < count; ++n) {
            try {
                measurement.Measure(numbers[n * numbers.Count() / count], frame);
                choice.Sample(frame.values, frame.status);
            } catch (const measure::CError& error) {
                if (!error.Facts().frame) throw;
            }
        }
    }

    struct SPacked {
        SPackedFrame pixels;
        SReportFrame facts;
    };
    static SPacked Pack(const measure::CFrame& frame, const SPacking& packing) {
        const SPagePixels pixels = BinPixels(frame.values, frame.status, frame.width, frame.height, packing.bin);
        SReportFrame facts{.number = frame.number, .counter = frame.counter};
        if (frame.time) facts.time = TimeText(*frame.time);
        if (frame.merged.empty()) facts.preset = frame.preset;
        return {PackFrame(pixels, packing.step), std::move(facts)};
    }

    /// The whole page; it takes its place only when it is not larger than `most`. Answers its size.
    u64 Write(SReport& report, CMeasureRun& run, const measure::CMeasurement& measurement, const measure::CFrame& first,
              std::optional<u64> most) const {
        report.frames.clear();
        report.figures = {};
        COutputFile file(output_.File(), output_.Overwrites());
        CReportPage page([&](std::string_view text) { file.Write(text.data(), text.size()); });
        run.Run([&](const measure::CFrame& frame) { return Pack(frame, report.packing); },
                [&](SPacked&& frame) {
                    page.Add(frame.pixels);
                    report.figures.Add(frame.pixels.figures);
                    report.frames.push_back(std::move(frame.facts));
                });
        report.facts = ReportFacts(report, measurement, first, run.Skipped());
        page.Finish(report);
        if (!most || page.Size() <= *most) file.Commit();
        return page.Size();
    }

    void Report(const SReport& report, u64 size, const CMeasureRun& run) const {
        const auto& [bin, step] = report.packing;
        if (output_.SaysJson()) {
            PrintJson({{"schema", kSchemaVersion},
                       {"output", output_.File()},
                       {"frames", report.frames.size()},
                       {"skipped", run.Skipped()},
                       {"complete", run.Exit() == ExitDone},
                       {"findings", FindingsJson(run.Source().Findings())},
                       {"bytes", size},
                       {"step", step},
                       {"stepUnit", report.unit.difference},
                       {"bin", bin},
                       {"largestRounding", report.figures.largestRounding}});
            return;
        }
        Say(fmt::format("{}: {} {}, {} bytes, in steps of {} {}{}", output_.File(), report.frames.size(),
                        report.frames.size() == 1 ? "frame" : "frames", size, step, report.unit.difference,
                        bin == 1 ? "" : fmt::format(", {0} x {0} pixels made one", bin)));
    }

    CSourceArguments source_;
    CMeasureArguments measure_;
    COutputArguments output_;
    std::string step_;
    std::string bin_;
    std::string maxSize_;
    CRegionArguments regions_;
    bool mergePresets_ = false;
};

}  // namespace

std::unique_ptr<ICommand> MakeReportCommand() { return std::make_unique<CReportCommand>(); }

}  // namespace ovix::app
