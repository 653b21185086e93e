#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cmath>

#include "apps/ovix/cli/measure_arguments.h"
#include "apps/ovix/cli/measure_run.h"
#include "apps/ovix/cli/regions.h"
#include "apps/ovix/cli/source_arguments.h"
#include "apps/ovix/commands/command.h"
#include "apps/ovix/facts/findings.h"
#include "apps/ovix/facts/provenance.h"
#include "apps/ovix/facts/scene_json.h"
#include "apps/ovix/fault.h"
#include "apps/ovix/text/console.h"
#include "apps/ovix/text/number_text.h"
#include "apps/ovix/text/text_table.h"
#include "apps/ovix/text/values.h"
#include "apps/ovix/units.h"
#include "measure/measure.h"

namespace ovix::app {

namespace {

/// The scene values whose uncertainty has an option of its own.
constexpr const char* kSceneKeys[] = {"emissivity",       "distance", "reflected-temp",  "atmosphere-temp",
                                      "atmosphere-trans", "humidity", "ext-optics-temp", "ext-optics-trans"};

/// The counts of the chosen pixels and frames, and how they scatter.
struct SCounts {
    double mean = 0;
    std::optional<double> u = {};  ///< standard uncertainty of the mean
    std::string noise = {};        ///< what that rests on
    u64 frames = 0;
    u64 pixels = 0;
};

class CUncertaintyCommand final : public ICommand {
  public:
    const char* Verb() const override { return "uncertainty"; }
    const char* Brief() const override {
        return "the uncertainty of a pixel or a region: sensitivities, budget, Monte Carlo (JCGM 100 and 101)";
    }
    const char* Examples() const override {
        return "ovix uncertainty run.krt --at 427,276 --emissivity-u 0.02 --reflected-temp-u 2K\n"
               "ovix uncertainty run.krt --roi circle:427,276,20 --frames 0-9 --emissivity-u 0.02 --constant-u "
               "planckB=0.1% --monte-carlo 2000 --json";
    }
    void AddOptions(CLI::App& verb) override {
        source_.Add(verb);
        measure_.Add(verb);
        const char* pixel = "Pixels";
        auto* at = verb.add_option("--at", at_, "the pixel, column and row from 0");
        at->type_name("X,Y")->group(pixel);
        verb.add_option("--roi", region_, "the region whose mean is measured, as of \"ovix stats\"")
            ->type_name("REGION")
            ->group(pixel)
            ->excludes(at);
        const char* group = "Standard uncertainties (of the others none is known: they count as exact)";
        sceneU_.resize(std::size(kSceneKeys));
        for (std::size_t i = 0; i < std::size(kSceneKeys); ++i) {
            verb.add_option(fmt::format("--{}-u", kSceneKeys[i]), sceneU_[i], fmt::format("of --{}", kSceneKeys[i]))
                ->type_name("U")
                ->group(group);
        }
        verb.add_option(
                "--counts-u", countsU_,
                "of the counts (else that of their noise: from the scatter over the frames, or of one frame over "
                "the region)")
            ->type_name("U")
            ->group(group);
        verb.add_option("--constant-u", constantsU_,
                        "of a constant of the calibration, in its unit or as a share: planckB=1.5, planckR=0.5%")
            ->type_name("NAME=U")
            ->allow_extra_args(false)
            ->group(group);
        const char* output = "Output";
        verb.add_option("--coverage", coverage_, "the factor of the expanded uncertainty (else 2)")
            ->type_name("K")
            ->group(output);
        auto* trials = verb.add_option("--monte-carlo", trials_,
                                       "draw all inputs so many times, and hold the linear budget against it");
        trials->type_name("TRIALS")->group(output);
        verb.add_option("--seed", seed_, "of the draws (else 1)")->type_name("N")->group(output)->needs(trials);
        verb.add_flag("--json", json_, "one JSON document")->group(output);
    }

    EExit Run() override {
        if (at_.empty() && region_.empty()) throw UsageFault("uncertainty: --at or --roi says of which pixels");
        measure::SUncertaintyOptions wanted = Wanted();
        const measure::SMeasureOptions options = measure_.Options();
        const measure::CSource source = source_.Open();
        if (!source.IsNumbered()) throw UsageFault(source.Name() + ": frames are read twice, which --spool allows");
        const measure::CPixelSet pixels = Pixels(source.Format().width, source.Format().height);

        measure::SMeasureOptions ofCounts = options;
        ofCounts.quantity = measure::EQuantity::Counts;
        ofCounts.calibration.reset();
        const measure::CMeasurement inCounts(source, ofCounts), inUnit(source, options);
        measure_.RefuseIdle(inUnit, source_.Frames(source));
        const SCounts counts = CountsOf(inCounts, pixels);
        if (!wanted.standard.contains("counts") && counts.u && *counts.u > 0) wanted.standard["counts"] = *counts.u;
        CMeasureRun run(inUnit, source_, false);
        const measure::CFrame frame = run.First();
        const measure::SUncertainty found = Evaluate(frame, counts.mean, wanted);
        json_ ? PrintJson(Document(inUnit, frame, pixels, counts, found)) : Print(Text(counts, found));
        return CSourceArguments::Exit(source, skipped_);
    }

  private:
    static double Positive(const std::string& option, const std::string& text) {
        const auto number = ParseNumber<double>(text);
        if (!number || !(*number > 0) || !std::isfinite(*number))
            throw UsageFault(fmt::format("{}: expected an uncertainty above 0, found \"{}\"", option, text));
        return *number;
    }
    /// Uncertainties of temperatures are differences: K and degrees Celsius are one, F and R are 1.8 times smaller.
    static double OfTemperature(const std::string& option, std::string text) {
        double size = 1;
        const char last = text.empty() ? '\0' : static_cast<char>(text.back() & ~0x20);
        if (last == 'F' || last == 'R') size = 1.8;
        if (size != 1 || last == 'K' || last == 'C') text.pop_back();
        return Positive(option, text) / size;
    }

    measure::SUncertaintyOptions Wanted() const {
        measure::SUncertaintyOptions wanted;
        for (std::size_t i = 0; i < sceneU_.size(); ++i) {
            if (sceneU_[i].empty()) continue;
            const std::string key = kSceneKeys[i], option = "--" + key + "-u";
            wanted.standard[key] =
                key.ends_with("-temp") ? OfTemperature(option, sceneU_[i]) : Positive(option, sceneU_[i]);
        }
        if (!countsU_.empty()) wanted.standard["counts"] = Positive("--counts-u", countsU_);
        for (const std::string& text : constantsU_) {
            const std::size_t sign = text.find('=');
            if (sign == std::string::npos) throw UsageFault("--constant-u: expected NAME=U, found \"" + text + "\"");
            std::string number = text.substr(sign + 1);
            const bool share = number.ends_with('%');
            if (share) number.pop_back();
            const double u = Positive("--constant-u", number);
            (share ? wanted.relative : wanted.standard)[text.substr(0, sign)] = share ? u / 100 : u;
        }
        if (!coverage_.empty()) wanted.coverage = ParseWithin("--coverage", coverage_, 0.001f, 1000);
        if (!trials_.empty()) {
            const auto trials = ParseNumber<u64>(trials_);
            if (!trials || *trials < 100 || *trials > 10'000'000)
                throw UsageFault("--monte-carlo: expected 100 to 10000000 trials, found \"" + trials_ + "\"");
            wanted.trials = *trials;
        }
        if (!seed_.empty()) {
            const auto seed = ParseNumber<u64>(seed_);
            if (!seed) throw UsageFault("--seed: expected a whole number, found \"" + seed_ + "\"");
            wanted.seed = *seed;
        }
        return wanted;
    }

    measure::CPixelSet Pixels(u16 width, u16 height) const {
        if (!region_.empty()) return PixelsOf(ParseShapes("--roi", {region_}), width, height).front();
        const auto [x, y] = ParsePoint("--at", at_, width, height);
        return PixelsOf({{.name = "pixel", .kind = measure::EShape::Spot, .points = {{x, y}}}}, width, height).front();
    }

    /// The mean of the pixels over all chosen frames. Its uncertainty is that of a mean of independent readings: JCGM
    /// 100, 4.2.3, of the frames where there are several, of the pixels of the one frame else. The variance of a frame
    /// is half the mean square of what one differs from the next (von Neumann's), in which a scene that drifts from the
    /// first frame to the last hardly counts.
    SCounts CountsOf(const measure::CMeasurement& measurement, const measure::CPixelSet& pixels) {
        std::vector<double> means;
        double scatter = 0;
        u32 counted = 0;
        CMeasureRun run(measurement, source_, false);
        run.Run([&](const measure::CFrame& frame) { return measure::FiguresOf(frame, pixels); },
                [&](const measure::SPixelFigures& figures) {
                    if (!figures.count) return;
                    means.push_back(figures.mean);
                    scatter = figures.standardDeviation;
                    counted = figures.count;
                });
        skipped_ = run.Skipped();
        if (means.empty()) throw CFault({.problem = "no pixel of the region counts in any frame"});
        const auto n = static_cast<double>(means.size());
        SCounts result{.frames = means.size(), .pixels = counted};
        for (const double mean : means) result.mean += mean / n;
        if (means.size() > 1) {
            double squares = 0;
            for (std::size_t i = 1; i < means.size(); ++i) squares += std::pow(means[i] - means[i - 1], 2);
            result.u = std::sqrt(squares / 2 / (n - 1) / n);
            result.noise = fmt::format("the scatter from frame to frame of {}", means.size());
        } else if (counted > 1) {
            const double pixelCount = counted;
            result.u = scatter * std::sqrt(pixelCount / (pixelCount - 1)) / std::sqrt(pixelCount);
            result.noise = fmt::format("the scatter over {} pixels, the scene's own included", counted);
        } else {
            result.noise = "not known of one pixel of one frame: --frames or --counts-u";
        }
        if (!countsU_.empty()) result.noise = "as given";
        return result;
    }

    static measure::SUncertainty Evaluate(const measure::CFrame& frame, double counts,
                                          const measure::SUncertaintyOptions& wanted) {
        try {
            return measure::EvaluateUncertainty(frame, counts, wanted);
        } catch (const measure::CError& error) {
            throw FaultOf(error);
        }
    }

    static std::string Text(const SCounts& counts, const measure::SUncertainty& found) {
        const SUnitText unit = UnitText(found.unit, found.scale);
        const auto shown = [](double value) { return fmt::format("{:.4g}", value); };
        using Table = CTextTable;
        Table table({{"Input"},
                     {"Value", Table::Right},
                     {"Unit"},
                     {"Standard u", Table::Right},
                     {fmt::format("Sensitivity ({} per unit)", unit.difference), Table::Right},
                     {fmt::format("Contribution ({})", unit.difference), Table::Right},
                     {"Share", Table::Right}});
        for (const measure::SUncertainInput& entry : found.inputs) {
            table.Row({entry.input.name, fmt::format("{:.7g}", entry.input.value), entry.input.unit,
                       entry.u > 0 ? shown(entry.u) : "-", shown(entry.sensitivity),
                       entry.u > 0 ? shown(entry.contribution) : "-",
                       entry.u > 0 ? fmt::format("{:.1f} %", 100 * entry.share) : "-"});
        }
        std::string text =
            table.Text() + fmt::format(
                               "\nnoise of the counts: {}\n\n{} = {} {}\ncombined standard uncertainty {} {}\n"
                               "expanded uncertainty {} {} (k = {:g})\n",
                               counts.noise, unit.quantity, ShownValue(found.value, found.unit), unit.symbol,
                               shown(found.combined), unit.difference, shown(found.expanded), unit.difference,
                               found.coverage);
        if (!found.monteCarlo) return text;
        const measure::SMonteCarlo& mc = *found.monteCarlo;
        return text + fmt::format(
                          "Monte Carlo of {} trials: mean {} {}, u {} {}, 95 % from {} to {} {}: the linear "
                          "budget {} within {} {}\n",
                          mc.trials, ShownValue(mc.mean, found.unit), unit.symbol, shown(mc.u), unit.difference,
                          ShownValue(mc.low, found.unit), ShownValue(mc.high, found.unit), unit.symbol,
                          mc.agrees ? "agrees" : "does not agree", shown(mc.tolerance), unit.difference);
    }

    Json Document(const measure::CMeasurement& measurement, const measure::CFrame& frame,
                  const measure::CPixelSet& pixels, const SCounts& counts, const measure::SUncertainty& found) const {
        const measure::CSource& source = measurement.Source();
        const SUnitText unit = UnitText(found.unit, found.scale);
        Json document{{"schema", kSchemaVersion},   {"file", source.Name()},         {"frame", frame.number},
                      {"frames", counts.frames},    {"region", pixels.Shape().name}, {"pixels", counts.pixels},
                      {"quantity", unit.quantity},  {"unit", unit.symbol},           {"deviationUnit", unit.difference},
                      {"counts", found.counts},     {"noise", counts.noise},         {"value", found.value},
                      {"combined", found.combined}, {"coverage", found.coverage},    {"expanded", found.expanded},
                      {"inputs", Json::array()}};
        for (const measure::SUncertainInput& entry : found.inputs) {
            document["inputs"].push_back({{"key", entry.input.key},
                                          {"name", entry.input.name},
                                          {"value", entry.input.value},
                                          {"unit", entry.input.unit},
                                          {"from", OriginWord(entry.input.origin)},
                                          {"constant", entry.constant},
                                          {"u", entry.u},
                                          {"sensitivity", entry.sensitivity},
                                          {"contribution", entry.contribution},
                                          {"share", entry.share}});
        }
        if (found.monteCarlo) {
            const measure::SMonteCarlo& mc = *found.monteCarlo;
            document["monteCarlo"] = {{"trials", mc.trials}, {"mean", mc.mean},          {"u", mc.u},
                                      {"low", mc.low},       {"high", mc.high},          {"probability", 0.95},
                                      {"agrees", mc.agrees}, {"tolerance", mc.tolerance}};
        }
        document["complete"] = CSourceArguments::Exit(source, skipped_) == ExitDone;
        document["findings"] = FindingsJson(source.Findings());
        document["provenance"] = ProvenanceJson(source, measurement.Options());
        return document;
    }

    CSourceArguments source_;
    CMeasureArguments measure_;
    std::string at_, region_, countsU_, coverage_, trials_, seed_;
    std::vector<std::string> sceneU_, constantsU_;
    bool json_ = false;
    u64 skipped_ = 0;
};

}  // namespace

std::unique_ptr<ICommand> MakeUncertaintyCommand() { return std::make_unique<CUncertaintyCommand>(); }

}  // namespace ovix::app
