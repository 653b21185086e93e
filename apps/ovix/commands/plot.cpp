#include "apps/ovix/commands/command.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <filesystem>

#include "apps/ovix/cli/measure_arguments.h"
#include "apps/ovix/cli/measure_run.h"
#include "apps/ovix/cli/output_arguments.h"
#include "apps/ovix/cli/regions.h"
#include "apps/ovix/cli/source_arguments.h"
#include "apps/ovix/facts/findings.h"
#include "apps/ovix/facts/scene_json.h"
#include "apps/ovix/fault.h"
#include "apps/ovix/output/output_file.h"
#include "apps/ovix/plot/plot_data.h"
#include "apps/ovix/text/choice.h"
#include "apps/ovix/text/console.h"
#include "apps/ovix/text/values.h"
#include "apps/ovix/units.h"

namespace ovix::app {

namespace {

enum class EKind { Time, Profile, Histogram };

class CPlotCommand final : public ICommand {
  public:
    const char* Verb() const override { return "plot"; }
    const char* Brief() const override { return "values over time, along a line or as a histogram, as PNG or SVG"; }
    const char* Examples() const override {
        return "ovix plot run.krt --roi bearing=385,212,78,78 -o time.svg\n"
               "ovix plot run.krt --kind profile --line across=0,250,639,250 --frames 0,-1 -o profile.png\n"
               "ovix plot run.krt --kind histogram --frames 0 -o histogram.png";
    }
    void AddOptions(CLI::App& verb) override {
        source_.Add(verb);
        measure_.Add(verb);
        CMeasureRun::AddOption(verb, mergePresets_);
        const char* group = "Output";
        const auto add = [&](const char* name, auto& value, const char* type, const char* help) {
            return verb.add_option(name, value, help)->type_name(type)->group(group);
        };
        output_.Add(verb, "the plot to write: .png or .svg; - is an SVG");
        add("--kind", kind_, "KIND",
            "time (the default), profile along each --line, or histogram; the last two with a curve for each frame");
        add("--figure", figure_, "FIGURE", "over time: mean (the default), max or min, of good pixels");
        regions_.Add(verb, group);
        add("--line", lines_, "LINE", "of a profile: x0,y0,x1,y1 or name=x0,y0,x1,y1")->allow_extra_args(false);
    }

    EExit Run() override {
        const EKind kind = ParseChoice<EKind>(
            "--kind", kind_, {{"time", EKind::Time}, {"profile", EKind::Profile}, {"histogram", EKind::Histogram}});
        Require(kind);
        const measure::CSource source = source_.Open();
        const u16 width = source.Format().width, height = source.Format().height;
        const SAsked asked{
            regions_.Of(width, height), PixelsOf(ParseLines("--line", lines_), width, height),
            ParseChoice<EFigure>("--figure", figure_.empty() ? "mean" : figure_,
                                 {{"mean", EFigure::Mean}, {"max", EFigure::Highest}, {"min", EFigure::Lowest}})};
        RequireFew(asked, kind, 1);
        COutputFile file(output_.File(), output_.Overwrites());
        const measure::CMeasurement measurement(source, measure_.Options());
        CMeasureRun run(measurement, source_, mergePresets_);
        SSeen seen;
        const auto look = [&](const measure::CFrame& frame) { return Look(frame, asked, kind, measurement); };
        const auto keep = [&](SLooked&& frame) {
            if (!seen.empty()) frame.parameters = {};  // the first one's speak for all
            seen.push_back(std::move(frame));
            RequireFew(asked, kind, seen.size());
        };
        run.Run(look, keep);
        const SPlot plot = Plot(seen, asked, kind, std::filesystem::path(source.Name()).filename().string());
        Write(file, plot, Description(plot, seen));
        Report(plot, run);
        return run.Exit();
    }

  private:
    struct SAsked {
        std::vector<measure::CPixelSet> regions;
        std::vector<measure::CPixelSet> lines;
        EFigure figure;
    };
    /// What a plot needs of a frame.
    struct SLooked {
        u64 number = 0;
        std::optional<measure::Time> time;
        SUnitText unit;
        Json parameters;
        std::vector<double> figures;             ///< of each region
        std::vector<std::vector<double>> lines;  ///< along each
        std::vector<std::vector<float>> sets;    ///< of each region
    };
    using SSeen = std::vector<SLooked>;

    bool IsSvg() const { return output_.File() == "-" || CString(output_.File().c_str()).EndsWithNoCase(L".svg"); }

    void Require(EKind kind) const {
        if (!IsSvg() && !CString(output_.File().c_str()).EndsWithNoCase(L".png"))
            throw UsageFault(output_.File() + ": a plot ends in .png or .svg");
        if (kind == EKind::Profile && lines_.empty()) throw UsageFault("--kind profile: needs a --line");
        if (kind != EKind::Profile && !lines_.empty())
            throw UsageFault("--line: has an effect on --kind profile alone");
        if (kind == EKind::Profile && regions_.AreGiven())
            throw UsageFault("--roi, --regions: have no effect on --kind profile");
        if (kind != EKind::Time && !figure_.empty()) throw UsageFault("--figure: has an effect on --kind time alone");
    }

    static void RequireFew(const SAsked& asked, EKind kind, u64 frames) {
        const std::size_t things = kind == EKind::Profile ? asked.lines.size() : asked.regions.size();
        if (things * (kind == EKind::Time ? 1 : frames) > kMostCurves)
            throw UsageFault(fmt::format("a plot has at most {} curves: choose fewer {}", kMostCurves,
                                         things > kMostCurves ? "regions or lines" : "--frames"));
    }

    static SLooked Look(const measure::CFrame& frame, const SAsked& asked, EKind kind,
                        const measure::CMeasurement& measurement) {
        SLooked looked{.number = frame.number,
                       .time = frame.time,
                       .unit = UnitText(frame.unit, frame.scale),
                       .parameters = ParametersJson(measurement, frame),
                       .figures = {},
                       .lines = {},
                       .sets = {}};
        if (kind == EKind::Profile) {
            for (const measure::CPixelSet& line : asked.lines) looked.lines.push_back(ProfileOf(frame, line));
            return looked;
        }
        for (const measure::CPixelSet& region : asked.regions) {
            std::vector<float> values = GoodValues(frame, region);
            looked.figures.push_back(FigureOf(values, asked.figure));
            if (kind == EKind::Histogram) looked.sets.push_back(std::move(values));
        }
        return looked;
    }

    /// Names of curves of several frames bear the frame's number.
    static std::string NameOf(const std::string& name, const SLooked& frame, const SSeen& seen) {
        return seen.size() == 1 ? name : fmt::format("{}, frame {}", name, frame.number);
    }

    SPlot Plot(const SSeen& seen, const SAsked& asked, EKind kind, const std::string& name) const {
        SPlot plot{.title = name};
        if (seen.size() == 1) plot.title += fmt::format("  ·  frame {}", seen.front().number);
        const std::string values = seen.front().unit.Label();
        if (kind == EKind::Time) {
            PutTime(plot, seen, asked);
            plot.yLabel = (figure_.empty() ? "mean" : figure_) + " " + values;
        } else if (kind == EKind::Profile) {
            PutProfiles(plot, seen, asked);
            plot.xLabel = "Pixels along the line";
            plot.yLabel = values;
        } else {
            std::vector<std::string> names;
            std::vector<std::vector<float>> sets;
            for (const SLooked& frame : seen) {
                for (const measure::CPixelSet& region : asked.regions)
                    names.push_back(NameOf(region.Shape().name, frame, seen));
                sets.insert(sets.end(), frame.sets.begin(), frame.sets.end());
            }
            PutHistogram(plot, names, sets);
            plot.xLabel = values;
            plot.yLabel = "Pixels";
        }
        return plot;
    }

    /// Over seconds where each frame carries its time and no clock went back, else over the frames' numbers.
    static void PutTime(SPlot& plot, const SSeen& seen, const SAsked& asked) {
        bool timed = true;
        for (std::size_t i = 0; i < seen.size(); ++i)
            timed = timed && seen[i].time && (i == 0 || *seen[i - 1].time <= *seen[i].time);
        plot.xLabel = timed ? "Time after the first frame (s)" : "Frame";
        for (const SLooked& frame : seen) {
            plot.x.push_back(timed ? std::chrono::duration<double>(*frame.time - *seen.front().time).count()
                                   : static_cast<double>(frame.number));
        }
        for (std::size_t r = 0; r < asked.regions.size(); ++r) {
            SCurve curve{asked.regions[r].Shape().name, {}};
            for (const SLooked& frame : seen) curve.values.push_back(frame.figures[r]);
            plot.curves.push_back(std::move(curve));
        }
    }

    static void PutProfiles(SPlot& plot, const SSeen& seen, const SAsked& asked) {
        std::size_t longest = 0;
        for (const SLooked& frame : seen) {
            for (std::size_t l = 0; l < asked.lines.size(); ++l) {
                plot.curves.push_back({NameOf(asked.lines[l].Shape().name, frame, seen), frame.lines[l]});
                longest = std::max(longest, frame.lines[l].size());
            }
        }
        for (std::size_t i = 0; i < longest; ++i) plot.x.push_back(static_cast<double>(i));
    }

    static Json Description(const SPlot& plot, const SSeen& seen) {
        return {{"schema", kSchemaVersion},
                {"title", plot.title},
                {"x", plot.xLabel},
                {"y", plot.yLabel},
                {"frames", seen.size()},
                {"parameters", seen.front().parameters},
                {"software", "ovix " OVIX_VERSION}};
    }

    void Write(COutputFile& file, const SPlot& plot, const Json& description) const {
        const std::string text = JsonText(description, -1, true);
        if (IsSvg()) {
            const std::string svg = PlotSvg(plot, text);
            file.Write(svg.data(), svg.size());
        } else {
            const std::vector<u8> png = PngOf(PlotPixels(plot), text, 6);
            file.Write(png.data(), png.size());
        }
        file.Commit();
    }

    void Report(const SPlot& plot, const CMeasureRun& run) const {
        Json names = Json::array();
        for (const SCurve& curve : plot.curves) names.push_back(curve.name);
        if (output_.SaysJson()) {
            PrintJson({{"schema", kSchemaVersion},
                       {"output", output_.File()},
                       {"curves", names},
                       {"frames", run.Done()},
                       {"skipped", run.Skipped()},
                       {"complete", run.Exit() == ExitDone},
                       {"findings", FindingsJson(run.Source().Findings())}});
            return;
        }
        Say(fmt::format("{}: {} {} of {} {}", output_.File(), names.size(), names.size() == 1 ? "curve" : "curves",
                        run.Done(), run.Done() == 1 ? "frame" : "frames"));
    }

    CSourceArguments source_;
    CMeasureArguments measure_;
    COutputArguments output_;
    std::string kind_ = "time";
    std::string figure_;
    CRegionArguments regions_;
    std::vector<std::string> lines_;
    bool mergePresets_ = false;
};

}  // namespace

std::unique_ptr<ICommand> MakePlotCommand() { return std::make_unique<CPlotCommand>(); }

}  // namespace ovix::app
