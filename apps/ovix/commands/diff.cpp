#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>

#include "apps/ovix/cli/many_inputs.h"
#include "apps/ovix/cli/measure_arguments.h"
#include "apps/ovix/cli/source_arguments.h"
#include "apps/ovix/commands/command.h"
#include "apps/ovix/facts/findings.h"
#include "apps/ovix/text/console.h"
#include "apps/ovix/text/number_text.h"
#include "apps/ovix/text/values.h"
#include "apps/ovix/units.h"
#include "measure/measure.h"

namespace ovix::app {

using measure::CFrame;
using measure::CSource;

namespace {

/// A tolerance with its unit: one of a scale of temperatures is turned into that of the values, whatever it is.
struct STolerance {
    double number = 0;
    char scale = 0;  ///< C, F, K or R; 0 for the unit of the values

    static STolerance Parse(const std::string& text) {
        STolerance tolerance;
        std::string digits = text;
        while (!digits.empty() && (digits.back() == ' ' || std::isalpha(static_cast<unsigned char>(digits.back())))) {
            if (digits.back() != ' ') tolerance.scale = static_cast<char>(digits.back() & ~0x20);
            digits.pop_back();
        }
        if (digits.ends_with("°")) digits.resize(digits.size() - std::string("°").size());
        while (digits.ends_with(' ')) digits.pop_back();
        const auto number = ParseNumber<double>(digits);
        const std::string letters = text.substr(digits.size());
        const bool known = tolerance.scale == 0 ||
                           (std::string("CFKR").find(tolerance.scale) != std::string::npos && letters.size() <= 4);
        if (!number || !(*number >= 0 && *number < 1e12) || !known)
            throw UsageFault("--tolerance: expected a difference such as 0.05K, 0.1F or 2, found \"" + text + "\"");
        tolerance.number = *number;
        return tolerance;
    }
    double In(EUnit unit, ETempType valuesIn) const {
        if (!scale) return number;
        if (!IsTemperature(unit)) throw UsageFault("--tolerance: the values are no temperatures: leave the scale out");
        const auto large = [](bool fahrenheitOrRankine) { return fahrenheitOrRankine ? 1.8 : 1.0; };
        return number / large(scale == 'F' || scale == 'R') * large(valuesIn == Fahrenheit || valuesIn == Rankine);
    }
};

class CDiffCommand final : public ICommand {
  public:
    const char* Verb() const override { return "diff"; }
    const char* Brief() const override { return "hold the frames, metadata and units of two sources together"; }
    const char* Examples() const override {
        return "ovix diff run.krt run.krt --tolerance 0.05K\n"
               "ovix diff run.krt run.krt --unit counts --ignore counter --json";
    }
    void AddOptions(CLI::App& verb) override {
        source_.Add(verb, EInputs::Many);
        measure_.Add(verb);
        const char* group = "Comparison";
        verb.add_option("--tolerance", tolerance_, "how far values may lie apart: 0.05K, 0.1F, 2 (else 0)")
            ->type_name("DIFFERENCE")
            ->group(group);
        verb.add_option("--ignore", ignored_,
                        "a named value of the frames that may differ, as \"ovix info --frame\" names it")
            ->type_name("NAME")
            ->allow_extra_args(false)
            ->group(group);
        auto* values = verb.add_flag("--pixels-only", pixelsOnly_, "no named value and no status is looked at");
        values->group(group)->excludes(verb.get_option("--ignore"));
        verb.add_flag("--json", json_, "one JSON document")->group("Output");
    }

    EExit Run() override {
        const STolerance tolerance = STolerance::Parse(tolerance_);
        const measure::SMeasureOptions options = measure_.Options();
        const std::vector<CSourceArguments> inputs = source_.Each();
        if (inputs.size() != 2) throw UsageFault(fmt::format("diff: expected two files, found {}", inputs.size()));
        const CSource a = inputs[0].Open(), b = inputs[1].Open();
        document_ = {{"schema", kSchemaVersion}, {"a", a.Name()}, {"b", b.Name()}};
        CompareSources(inputs[0], a, inputs[1], b);
        if (differences_.empty()) CompareFrames(inputs[0], {a, options}, {b, options}, tolerance);
        const bool equal = differences_.empty();
        document_["equal"] = equal;
        document_["differences"] = differences_;
        document_["findings"] = {{"a", FindingsJson(a.Findings())}, {"b", FindingsJson(b.Findings())}};
        if (json_) {
            PrintJson(document_);
        } else if (equal) {
            Print(fmt::format("{} and {}: equal, {} {}\n", Printable(a.Name()), Printable(b.Name()), compared_,
                              compared_ == 1 ? "frame" : "frames"));
        }
        const EExit worth = Worse(CSourceArguments::Exit(a, 0), CSourceArguments::Exit(b, 0));
        return equal ? worth : ExitBadData;
    }

  private:
    static constexpr std::size_t kMostListed = 1000;

    void Differ(const std::string& line, Json facts) {
        if (!json_) Print(Printable(line) + '\n');
        if (differences_.size() < kMostListed) differences_.push_back(std::move(facts));
    }
    void DifferIn(const char* what, const Json& a, const Json& b) {
        if (a == b) return;
        const auto text = [](const Json& value) { return value.is_string() ? value.get<std::string>() : value.dump(); };
        Differ(fmt::format("{}: {} and {}", what, text(a), text(b)), {{"what", what}, {"a", a}, {"b", b}});
    }

    /// What differs here leaves no frames to be compared.
    void CompareSources(const CSourceArguments& inputA, const CSource& a, const CSourceArguments& inputB,
                        const CSource& b) {
        const auto size = [](const CSource& source) {
            return fmt::format("{} x {}", source.Format().width, source.Format().height);
        };
        const auto count = [](const CSourceArguments& input, const CSource& source) {
            const auto frames = input.Frames(source);
            return frames ? Json(frames->Count()) : source.Count() ? Json(*source.Count()) : Json();
        };
        DifferIn("size", size(a), size(b));
        const Json framesA = count(inputA, a), framesB = count(inputB, b);
        if (!framesA.is_null() && !framesB.is_null()) DifferIn("frames", framesA, framesB);
    }

    void CompareFrames(const CSourceArguments& inputA, const measure::CMeasurement& a, const measure::CMeasurement& b,
                       const STolerance& wanted) {
        measure::CSeries seriesA(a, {.frames = inputA.Frames(a.Source()), .threads = inputA.Jobs()});
        measure::CSeries seriesB(b, {.frames = inputA.Frames(b.Source()), .threads = inputA.Jobs()});
        auto atA = seriesA.begin();
        auto atB = seriesB.begin();
        u64 differing = 0;
        double largest = 0, tolerance = 0;
        for (; atA != seriesA.end() && atB != seriesB.end(); ++atA, ++atB, ++compared_) {
            if (!compared_) {
                tolerance = wanted.In(atA->unit, atA->scale);
                unit_ = atA->unit;
                difference_ = UnitText(atA->unit, atA->scale).difference;
                DifferIn("unit", measure::UnitWords(atA->unit), measure::UnitWords(atB->unit));
                if (!differences_.empty()) return;
                measure_.RefuseIdle(unit_);
            }
            const measure::SFrameDifference found = Compare(*atA, *atB, tolerance);
            largest = std::max(largest, found.largest);
            differing += SayFrame(*atA, *atB, found);
        }
        if ((atA == seriesA.end()) != (atB == seriesB.end()))
            Differ("frames: one source has more", {{"what", "frames"}, {"a", compared_}, {"b", compared_}});
        document_.update({{"unit", difference_},
                          {"tolerance", tolerance},
                          {"frames", compared_},
                          {"framesDiffering", differing},
                          {"largest", largest}});
    }

    bool SayFrame(const CFrame& a, const CFrame& b, const measure::SFrameDifference& found) {
        Json facts{{"what", "frame"}, {"frameA", a.number}, {"frameB", b.number}};
        std::string line = a.number == b.number ? fmt::format("frame {}:", a.number)
                                                : fmt::format("frames {} and {}:", a.number, b.number);
        bool differs = false;
        if (found.pixels) {
            line += fmt::format(" {} pixels differ, most by {} {} at {},{} ({} and {})", found.pixels,
                                ShownValue(found.largest, unit_), difference_, found.at.x, found.at.y,
                                ShownValue(found.a, unit_), ShownValue(found.b, unit_));
            facts.update({{"pixels", found.pixels}, {"largest", found.largest}, {"x", found.at.x}, {"y", found.at.y}});
            differs = true;
        }
        if (found.status && !pixelsOnly_) {
            line += fmt::format("{} the status of {} pixels", differs ? ";" : "", found.status);
            facts["status"] = found.status;
            differs = true;
        }
        for (const measure::SValueDifference& value : found.values) {
            if (pixelsOnly_ || std::ranges::find(ignored_, value.name) != ignored_.end()) continue;
            line += fmt::format("{} {} \"{}\" and \"{}\"", differs ? ";" : "", value.name, value.a, value.b);
            facts["values"].push_back({{"name", value.name}, {"a", value.a}, {"b", value.b}});
            differs = true;
        }
        if (differs) Differ(line, std::move(facts));
        return differs;
    }

    CSourceArguments source_;
    CMeasureArguments measure_;
    std::string tolerance_ = "0";
    std::vector<std::string> ignored_;
    bool pixelsOnly_ = false;
    bool json_ = false;

    Json document_;
    Json differences_ = Json::array();
    u64 compared_ = 0;
    EUnit unit_ = Counts;
    std::string difference_;  ///< the unit of differences
};

}  // namespace

std::unique_ptr<ICommand> MakeDiffCommand() { return std::make_unique<CDiffCommand>(); }

}  // namespace ovix::app
