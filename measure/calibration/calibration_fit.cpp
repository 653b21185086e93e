#include "measure/calibration/calibration_fit.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "measure/error.h"
#include "measure/text.h"
#include "reduce/reduce.h"

namespace ovix::measure {

namespace {

/// The order from which on the library forms the powers of a count in floating point in all its ways. Those of the
/// orders 2 to 4 wrap at 32 bits where tables are filled, so such polynomials are written with zeros up to this order.
constexpr int kFloatingOrder = 5;
/// Kelvin between two entries of a table: its chords are less than a millikelvin off the curve.
constexpr double kTableStep = 0.5;
/// Kelvin that a table reaches beyond the black bodies, at least: outside it its ends would stand for every value.
constexpr double kLeastMargin = 50;
constexpr double kColdest = -270;
constexpr double kAbsoluteZero = -273.15;
constexpr double kHottest = 5000 + kAbsoluteZero;  ///< a table up to a mistaken number would take all memory
constexpr double kLongestWave = 100;               ///< micrometres
constexpr int kHighestOrder = 9;

struct SCurve {
    TArray<double> radiances;
    TArray<double> celsius;
};

/// Temperature over radiance by Planck's law in the band, from `low` to `high` degrees Celsius.
SCurve BlackBodyCurve(const SFitOptions& options, double low, double high) {
    SCurve curve;
    double last = 0;
    const int steps = static_cast<int>(std::ceil((high - low) / kTableStep));
    for (int i = 0; i <= steps; ++i) {
        const double celsius = low + kTableStep * i;
        const double radiance = reduce::Radiance(celsius, options.lowWave, options.highWave, 1);
        if (!(radiance > last)) continue;  // so cold that the band is dark
        last = radiance;
        curve.radiances.Add(radiance);
        curve.celsius.Add(celsius);
    }
    return curve;
}

/// The shortest text that reads back to the same number.
std::string DoubleText(double value) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

void Require(bool holds, const char* expected) {
    if (!holds) throw CError({.id = EError::WrongArgument, .problem = "user calibration", .expected = expected});
}

void RequireSense(const std::vector<SCalibrationPoint>& points, const SFitOptions& options) {
    const auto isOrder = [](int order) { return order >= 1 && order <= kHighestOrder; };
    Require(options.lowWave > 0 && options.lowWave < options.highWave && options.highWave <= kLongestWave,
            "a band in micrometres, its low end above 0 and below its high end, which is at most 100");
    Require(isOrder(options.order) && isOrder(options.temperatureOrder), "orders from 1 to 9");
    for (const SCalibrationPoint& point : points) {
        Require(point.preset < CRCalFile::PresetCount, "presets from 0 to 7");
        Require(std::isfinite(point.counts) && std::isfinite(point.celsius), "finite counts and temperatures");
        Require(point.celsius > kAbsoluteZero && point.celsius <= kHottest, "black bodies of at most 5000 K");
    }
}

class CPresetFitter {
  public:
    CPresetFitter(const SFitOptions& options, u8 preset, std::vector<SCalibrationPoint> points)
        : options_(options), preset_(preset), points_(std::move(points)) {}

    SPresetFit Fit(CRCalFile& calibration) {
        FitRadiance(calibration);
        FitTemperature(calibration);
        SPresetFit fit;
        fit.preset = preset_;
        for (u32 i = 0; i < counts_.size(); ++i) fit.points.push_back({points_[i], radiances_[i], 0, 0});
        Apply(fit);
        fit.steady = IsSteady();
        return fit;
    }

  private:
    void FitRadiance(CRCalFile& calibration) {
        for (const SCalibrationPoint& point : points_) {
            counts_.Add(point.counts);
            radiances_.Add(reduce::Radiance(point.celsius, options_.lowWave, options_.highWave, 1));
        }
        const auto [least, most] = std::minmax_element(radiances_.begin(), radiances_.end());
        if (!(*least > 0)) throw Undetermined("no radiance in this band");
        if (*least == *most) throw Undetermined("black bodies of two temperatures at least are needed");
        if (!LinearLeastSquareFit(counts_, radiances_, options_.order, coefficients_))
            throw Undetermined(Say(points_.size(), " points do not determine a polynomial of order ", options_.order));
        if (options_.order > 1 && options_.order < kFloatingOrder) coefficients_.SetSize(kFloatingOrder + 1);
        calibration.SetPolynomial(preset_, Order(), coefficients_);
    }
    void FitTemperature(CRCalFile& calibration) {
        const auto [low, high] = std::minmax_element(
            points_.begin(), points_.end(), [](const auto& a, const auto& b) { return a.celsius < b.celsius; });
        if (options_.model == ETemperatureModel::Table) {
            const double margin = std::max(kLeastMargin, high->celsius - low->celsius);
            curve_ = BlackBodyCurve(options_, std::max(kColdest, low->celsius - margin), high->celsius + margin);
            calibration.SetLookup(preset_, curve_.radiances, curve_.celsius);
        } else if (options_.model == ETemperatureModel::Polynomial) {
            SCurve curve = BlackBodyCurve(options_, low->celsius, high->celsius);
            if (!LinearLeastSquareFit(curve.radiances, curve.celsius, options_.temperatureOrder, temperature_))
                throw Undetermined(
                    Say("temperatures from ", DoubleText(low->celsius), " to ", DoubleText(high->celsius),
                        " degrees Celsius do not determine a polynomial of order ", options_.temperatureOrder));
            calibration.SetTempPolynomial(preset_, options_.temperatureOrder, temperature_);
        }
    }
    /// The points through the library's own kernels.
    void Apply(SPresetFit& fit) {
        const u32 count = counts_.size();
        std::vector<double> fitted(count), celsius(count);
        const STypedData in{counts_.data(), Flt64};
        const reduce::SRadianceParams toRadiance{coefficients_.data(), Order(), 0, nullptr};
        const reduce::STemperatureParams toTemperature{curve_.radiances.data(), curve_.celsius.data(),
                                                       static_cast<i32>(curve_.radiances.size()), temperature_.data(),
                                                       temperature_.size() ? options_.temperatureOrder : 0};
        const reduce::SCommonParams common{1, 1, Celsius, options_.highWave, options_.lowWave};
        reduce::CountsToRadiance(in, {fitted.data(), Flt64}, count, toRadiance, common);
        reduce::CountsToTemperature(in, {celsius.data(), Flt64}, count, toRadiance, toTemperature, common);
        for (u32 i = 0; i < count; ++i) {
            fit.points[i].fitted = fitted[i];
            fit.points[i].celsius = celsius[i];
        }
    }
    bool IsSteady() const {
        constexpr int kSamples = 500;
        const double first = points_.front().counts, last = points_.back().counts;
        const auto at = [&](int i) {
            return reduce::ToRadiance(first + (last - first) * i / kSamples, coefficients_.data(), Order(), 0, 1);
        };
        const bool rises = at(kSamples) > at(0);
        for (int i = 0; i < kSamples; ++i) {
            if ((at(i + 1) > at(i)) != rises) return false;
        }
        return true;
    }
    CError Undetermined(const std::string& problem) const {
        return CError({.id = EError::FitUndetermined, .problem = Say("preset ", preset_, ": ", problem)});
    }
    int Order() const { return static_cast<int>(coefficients_.size()) - 1; }

    const SFitOptions& options_;
    u8 preset_;
    std::vector<SCalibrationPoint> points_;
    TArray<double> counts_, radiances_, coefficients_, temperature_;
    SCurve curve_;
};

}  // namespace

double SFittedPoint::Residual() const { return celsius - point.celsius; }

double SPresetFit::Rms() const {
    double squares = 0;
    for (const SFittedPoint& point : points) squares += point.Residual() * point.Residual();
    return std::sqrt(squares / static_cast<double>(points.size()));
}

double SPresetFit::Largest() const {
    double largest = 0;
    for (const SFittedPoint& point : points) {
        if (std::isnan(point.Residual())) return NAN;
        largest = std::max(largest, std::abs(point.Residual()));
    }
    return largest;
}

SCalibrationFit FitCalibration(std::vector<SCalibrationPoint> points, const SFitOptions& options) {
    RequireSense(points, options);
    SCalibrationFit fit;
    fit.calibration.SetBandpass(options.lowWave, options.highWave);
    std::stable_sort(points.begin(), points.end(), [](const auto& a, const auto& b) { return a.counts < b.counts; });
    for (u8 preset = 0; preset < CRCalFile::PresetCount; ++preset) {
        std::vector<SCalibrationPoint> own;
        std::copy_if(points.begin(), points.end(), std::back_inserter(own),
                     [&](const SCalibrationPoint& point) { return point.preset == preset; });
        if (!own.empty()) fit.presets.push_back(CPresetFitter(options, preset, std::move(own)).Fit(fit.calibration));
    }
    return fit;
}

}  // namespace ovix::measure
