#include "measure/uncertainty/uncertainty.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "measure/error.h"
#include "measure/frame/unit_choice.h"
#include "measure/text.h"
#include "measure/uncertainty/model.h"

namespace ovix::measure {

namespace {

/// Normal numbers from a seed, the same on every machine that rounds its logarithms alike: SplitMix64 (Steele, Lea and
/// Flood 2014) and the transform of Box and Muller (1958).
class CNormal {
  public:
    explicit CNormal(u64 seed) : state_(seed) {}

    double operator()() {
        const double radius = std::sqrt(-2 * std::log(1 - Uniform()));
        return radius * std::cos(2 * std::numbers::pi * Uniform());
    }

  private:
    /// From 0 up to and without 1.
    double Uniform() {
        u64 z = state_ += 0x9E3779B97F4A7C15u;
        z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9u;
        z = (z ^ z >> 27) * 0x94D049BB133111EBu;
        return static_cast<double>((z ^ z >> 31) >> 11) * 0x1p-53;
    }

    u64 state_;
};

double Find(const std::map<std::string, double>& values, const std::string& key) {
    const auto found = values.find(key);
    return found == values.end() ? 0 : found->second;
}

double StandardOf(const SParameter& input, const SUncertaintyOptions& options) {
    return Find(options.standard, input.key) + Find(options.relative, input.key) * std::abs(input.value);
}

void RequireKnown(const std::map<std::string, double>& given, const CModel& model) {
    for (const auto& [key, u] : given) {
        const auto bears = [&key = key](const CModel::SInput& input) { return input.value.key == key; };
        if (!(u > 0 && std::isfinite(u)))
            throw CError({.id = EError::WrongArgument, .problem = key, .expected = "an uncertainty above 0"});
        if (key == "counts" || std::ranges::any_of(model.Inputs(), bears)) continue;
        std::string known = "counts";
        for (const CModel::SInput& input : model.Inputs()) known += ", " + input.value.key;
        throw CError({.id = EError::WrongArgument, .expected = "an input of this conversion: " + known, .found = key});
    }
}

/// The two ends between which the difference is taken, held to what the input can be.
std::pair<double, double> Ends(const CModel::SInput& input, double u) {
    constexpr double kShare = 0.005, kStepFromZero = 1e-3;
    const double x = input.value.value;
    double step = u > 0 ? u : x != 0 ? std::abs(x) * kShare : kStepFromZero;
    if (input.whole) step = std::max(1.0, std::round(step));
    return {std::max(x - step, input.least), std::min(x + step, input.most)};
}

double SensitivityOf(CModel& model, const CModel::SInput& input, double u, double counts) {
    const auto [low, high] = Ends(input, u);
    const auto at = [&](double x) {
        input.set(x);
        model.Update();
        return model.Value(counts);
    };
    const double above = at(high), below = at(low);
    input.set(input.value.value);
    model.Update();
    return (above - below) / (high - low);
}

double SensitivityToCounts(CModel& model, double u, double counts) {
    const double step = std::max(1.0, std::round(u));
    return (model.Value(counts + step) - model.Value(counts - step)) / (2 * step);
}

/// Two significant digits of the uncertainty, of which half of the last place is the tolerance: JCGM 101, 7.9.2.
double ToleranceOf(double combined) {
    return combined > 0 ? 0.5 * std::pow(10, std::floor(std::log10(combined)) - 1) : 0;
}

SMonteCarlo Simulate(CModel& model, const SUncertainty& linear, const SUncertaintyOptions& options) {
    CNormal normal(options.seed);
    std::vector<double> values;
    values.reserve(options.trials);
    for (u64 trial = 0; trial < options.trials; ++trial) {
        const double counts = linear.counts + linear.inputs.front().u * normal();
        for (std::size_t i = 0; i < model.Inputs().size(); ++i) {
            const double u = linear.inputs[i + 1].u;
            if (u <= 0) continue;
            const CModel::SInput& input = model.Inputs()[i];
            double x = input.value.value + u * normal();
            while (x < input.least || x > input.most) x = input.value.value + u * normal();
            input.set(input.whole ? std::round(x) : x);
        }
        model.Update();
        values.push_back(model.Value(counts));
    }
    SMonteCarlo result{.trials = options.trials};
    for (const double value : values) result.mean += value / static_cast<double>(values.size());
    double squares = 0;
    for (const double value : values) squares += (value - result.mean) * (value - result.mean);
    result.u = std::sqrt(squares / static_cast<double>(values.size() - 1));
    std::ranges::sort(values);
    const auto at = [&](double share) {
        return values[static_cast<std::size_t>(std::lround(share * static_cast<double>(values.size() - 1)))];
    };
    result.low = at(0.025);
    result.high = at(0.975);
    constexpr double k95 = 1.959964;
    result.tolerance = ToleranceOf(linear.combined);
    result.agrees = std::abs(linear.value - k95 * linear.combined - result.low) <= result.tolerance &&
                    std::abs(linear.value + k95 * linear.combined - result.high) <= result.tolerance;
    return result;
}

void RequireModel(const CFrame& frame) {
    const bool modelled = IsTemperature(frame.unit) || frame.unit == RadianceFactory || frame.unit == RadianceUser ||
                          frame.unit == ObjectSignal;
    if (!modelled || !frame.merged.empty())
        throw CError({.id = EError::UnitNotOffered,
                      .expected = "a temperature, a radiance or a signal of a frame that was not merged",
                      .found = UnitWords(frame.unit)});
}

}  // namespace

SUncertainty EvaluateUncertainty(const CFrame& frame, double counts, const SUncertaintyOptions& options) {
    constexpr u64 kMostTrials = 100'000'000;
    RequireModel(frame);
    if (!(options.coverage > 0) || options.trials == 1 || options.trials > kMostTrials)
        throw CError({.id = EError::WrongArgument, .expected = "a coverage factor above 0 and 2 to 10^8 trials"});
    CModel model(frame);
    RequireKnown(options.standard, model);
    RequireKnown(options.relative, model);

    SUncertainty result{.unit = frame.unit, .scale = frame.scale, .counts = counts, .value = model.Value(counts)};
    SUncertainInput raw{.input = {"counts", "counts", "counts", counts, EOrigin::Frame}};
    raw.u = StandardOf(raw.input, options);
    raw.sensitivity = SensitivityToCounts(model, raw.u, counts);
    result.inputs.push_back(raw);
    for (const CModel::SInput& input : model.Inputs()) {
        SUncertainInput entry{.input = input.value, .constant = input.constant};
        entry.u = StandardOf(input.value, options);
        entry.sensitivity = SensitivityOf(model, input, entry.u, counts);
        result.inputs.push_back(entry);
    }
    double variance = 0;
    for (SUncertainInput& entry : result.inputs) {
        entry.contribution = std::abs(entry.sensitivity) * entry.u;
        variance += entry.contribution * entry.contribution;
    }
    for (SUncertainInput& entry : result.inputs)
        entry.share = variance > 0 ? entry.contribution * entry.contribution / variance : 0;
    result.combined = std::sqrt(variance);
    result.coverage = options.coverage;
    result.expanded = options.coverage * result.combined;
    if (options.trials) result.monteCarlo = Simulate(model, result, options);
    return result;
}

}  // namespace ovix::measure
