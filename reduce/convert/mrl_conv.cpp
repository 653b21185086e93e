#include "reduce/convert/mrl_conv.h"

#include <algorithm>
#include <cmath>

#include "core/typed_data.h"
#include "reduce/convert/radiometry.h"
#include "reduce/convert/signal_runs.h"
#include "reduce/pixels/radiance_law.h"
#include "reduce/pixels/simd/model_simd.h"

namespace ovix::reduce {

namespace {

/// What a file says beyond it has no coefficients.
constexpr i32 kHighestDegree = 6;

constexpr u32 kPreparedSignals = 16384;  ///< those of a table

/// The end of a range widened by a part of its size, but at least by so many degrees. In single precision.
float Margin(float celsius, float least, float divisor) { return std::max(least, std::abs(celsius / divisor)); }

/// The radiances of a block of signals by a polynomial: the order codes of a user's calibration, with integer powers
/// that wrap at 32 bits, required as they are. 0 for a degree that is none.
void ApplyPolynomial(const SRadianceLaw& law, const u16* signals, u32 count, double* radiances) {
    SCounts counts;
    counts.Load({const_cast<u16*>(signals), UInt16}, count, EPowers::Wrapping);
    if (!ApplyLaw(law, counts, nullptr, radiances)) std::fill_n(radiances, count, 0.0);
}

constexpr auto kOnAllProcessors = [](u32 count, const auto& body) { ParallelFor(count, body); };

}  // namespace

SRadianceLaw CMrlConv::Law() const {
    return {cal_.c, std::min(cal_.degree, kHighestDegree), CBackground(cal_.signalOffset), kPath_};
}

void CMrlConv::Init(const CMerlinFactoryCalReduceObject& calibration, const CObjectParametersReduceObject& params) {
    const bool changed = cal_.degree != calibration.degree ||
                         !std::equal(std::begin(cal_.c), std::end(cal_.c), std::begin(calibration.c));
    cal_ = calibration;
    cal_.CreateLUT(0);
    ReInit(params);
    CalcLimits();
    if (changed && cal_.degree >= 2) FitInverse();
    if (changed) unscaled_.reset();
}

void CMrlConv::PrepareRanges() {
    const SRadianceLaw law = Law();
    if (!unscaled_ && TakesPowers(law)) unscaled_ = UnscaledRadiances(law, kPreparedSignals);
}

void CMrlConv::ReInit(const CObjectParametersReduceObject& params) {
    obj_ = params;
    if (obj_.emissivity == 0.0f) obj_.emissivity = 1.0f;
    usedAtmTao_ = obj_.atmosphereTrans;
    if (usedAtmTao_ == 0.0) {
        // Unlike in the other families a transmission below 0 is used as given, and all here is in double.
        usedAtmTao_ = AtmosphereOf(cal_).Transmission(obj_.atmosphereTemp - 273.15, obj_.distance,
                                                      std::sqrt(double{obj_.distance}), obj_.relativeHumidity);
    }
    const SPlanckCurve curve = CurveOf(cal_);
    K2_ = SOpticalPath{obj_.emissivity, usedAtmTao_, obj_.extOpticsTrans}.Surroundings(
        SignalOf(curve, obj_.reflectedTemp), SignalOf(curve, obj_.atmosphereTemp), SignalOf(curve, obj_.extOpticsTemp));
    kPath_ = 1 / (obj_.extOpticsTrans * usedAtmTao_);
}

void CMrlConv::CalcLimits() {
    const float high = static_cast<float>(cal_.highTemp + 273.15);
    const float low = static_cast<float>(cal_.lowTemp + 273.15);
    // The curve without its floor.
    const auto radiance = [this](double kelvin) {
        return cal_.planckR / (std::exp(cal_.planckB / kelvin) - cal_.planckF);
    };
    limits_.upper = radiance(high + Margin(cal_.highTemp, 2.0f, 50.0f));
    limits_.lower = radiance(low - Margin(cal_.lowTemp, 2.0f, 50.0f));
    limits_.overflow = radiance(high + Margin(cal_.highTemp, 5.0f, 20.0f));
    limits_.underflow = radiance(low - Margin(cal_.lowTemp, 5.0f, 20.0f));
}

void CMrlConv::FitInverse() {
    SRadianceLaw law = Law();
    law.scale = 1.0;
    const i32 low = cal_.fitLowSignal, high = cal_.fitHighSignal;
    const i32 inner = law.order + 2;
    const i32 step = (high - low) / (inner + 1);
    TArray<double> values, signals, coefficients;
    for (i32 i = 0; i <= inner + 1; ++i) {
        const u16 signal = static_cast<u16>(i > inner ? high : low + i * step);
        double value = 0;
        ApplyPolynomial(law, &signal, 1, &value);
        values.Add(value);
        signals.Add(signal);
    }
    if (!LinearLeastSquareFit(values, signals, law.order, coefficients)) return;
    std::copy(coefficients.begin(), coefficients.end(), inverse_);
}

double CMrlConv::Inverse(float value) const {
    const i32 degree = Law().order;
    double sum = 0;
    float power = 1;  // up to the fourth in single precision
    for (i32 i = 0; i <= degree; ++i, power *= value) {
        sum += inverse_[i] * (degree > 4 ? std::pow(double{value}, i) : power);
    }
    return sum;
}

bool CMrlConv::GetCalibratedRange(EUnit unit, ETempType scale, float& lower, float& upper) const {
    const float low = static_cast<float>(limits_.lower), high = static_cast<float>(limits_.upper);
    const bool isTemperature = unit == TemperatureFactory;
    if (!(low < high) || (!isTemperature && unit != RadianceFactory)) return false;
    lower = isTemperature ? RadianceToTemperature(low, nullptr, scale) : low;
    upper = isTemperature ? RadianceToTemperature(high, nullptr, scale) : high;
    return true;
}

/// The one chain of all forms, for a block at most.
void CMrlConv::Radiances(const u16* signals, u32 count, float* out, u8* status) const {
    double radiances[kRunBlock];
    static_assert(kSignalBlock <= kRunBlock);
    if (unscaled_ && std::all_of(signals, signals + count, [](u16 s) { return s < kPreparedSignals; })) {
        std::transform(signals, signals + count, radiances, [this](u16 signal) { return unscaled_[signal] * kPath_; });
    } else {
        ApplyPolynomial(Law(), signals, count, radiances);
    }
    u8 unwanted[kSignalBlock];
    std::transform(radiances, radiances + count, radiances, [](double r) { return static_cast<float>(r); });
    simd::LimitAll(limits_, radiances, status ? status : unwanted, count);
    std::transform(radiances, radiances + count, out, [](double r) { return static_cast<float>(r); });
}

/// `RadianceToTemperature` of those.
void CMrlConv::Temperatures(const u16* signals, u32 count, float* out, u8* status, ETempType scale) const {
    Radiances(signals, count, out, status);
    double compensated[kSignalBlock];
    std::transform(out, out + count, compensated,
                   [e = obj_.emissivity, K2 = K2_](float radiance) { return radiance / e - K2; });
    TemperaturesOf(CurveOf(cal_), TemperatureScale(Kelvin), compensated, count, out);
    if (scale == Kelvin) return;
    std::transform(out, out + count, out,
                   [to = TemperatureScale(scale)](float kelvin) { return static_cast<float>(to.FromKelvin(kelvin)); });
}

float CMrlConv::SignalToRadiance(u16 signal, u8* status) const {
    float radiance = 0;
    Radiances(&signal, 1, &radiance, status);
    return radiance;
}

float CMrlConv::SignalToTemperature(u16 signal, u8* status, ETempType scale) const {
    return RadianceToTemperature(SignalToRadiance(signal, status), nullptr, scale);
}

float CMrlConv::RadianceToTemperature(float radiance, u8*, ETempType scale) const {
    const float compensated = radiance / obj_.emissivity;
    const float kelvin = static_cast<float>(KelvinOf(CurveOf(cal_), compensated - K2_));
    return static_cast<float>(TemperatureScale(scale).FromKelvin(kelvin));
}

float CMrlConv::TemperatureToRadiance(float value, u8*, ETempType scale) const {
    const float kelvin = static_cast<float>(TemperatureScale(scale).ToKelvin(value));
    return static_cast<float>((SignalOf(CurveOf(cal_), kelvin) + K2_) * obj_.emissivity);
}

u16 CMrlConv::RadianceToSignal(float radiance, u8* status) const {
    double limited = radiance;
    const u8 flags = Limit(limited, limits_);
    if (status) *status = flags;
    const double r = static_cast<float>(limited);
    switch (cal_.degree) {
        case 1:
            return static_cast<u16>(TruncateTo<i64>((r / kPath_ - cal_.c[0]) / cal_.c[1]));
        case -1:
            return static_cast<u16>(TruncateTo<i64>((r - cal_.c[0]) / kPath_ / cal_.c[1] + cal_.signalOffset));
        case -2:
            return static_cast<u16>(TruncateTo<i64>((r / kPath_ - cal_.c[0]) / cal_.c[1] + cal_.signalOffset));
        default:
            return static_cast<u16>(RoundToInteger(Inverse(static_cast<float>(r / kPath_))));
    }
}

u16 CMrlConv::TemperatureToSignal(float value, u8* status, ETempType scale) const {
    return RadianceToSignal(TemperatureToRadiance(value, nullptr, scale), status);
}

void CMrlConv::SignalToRadiance(const u16* in, float* out, u8* status, u32 count) const {
    RunSignals(
        in, out, status, count, [this](auto... block) { Radiances(block...); }, kOnAllProcessors);
}
void CMrlConv::SignalToTemperature(const u16* in, float* out, u8* status, u32 count, ETempType scale) const {
    RunSignals(
        in, out, status, count, [=, this](auto... block) { Temperatures(block..., scale); }, kOnAllProcessors);
}
void CMrlConv::SignalToRadiance(u16 first, u16 last, float* out, u8* status) const {
    RunRange(first, last, out, status, [this](auto... block) { Radiances(block...); });
}
void CMrlConv::SignalToTemperature(u16 first, u16 last, float* out, u8* status, ETempType scale) const {
    RunRange(first, last, out, status, [=, this](auto... block) { Temperatures(block..., scale); });
}

}  // namespace ovix::reduce
