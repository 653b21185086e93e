#include "reduce/convert/radiometry.h"

#include <algorithm>
#include <limits>

#include "core/typed_data.h"
#include "reduce/convert/parallel_for.h"
#include "reduce/pixels/radiance.h"
#include "reduce/pixels/radiance_law.h"
#include "reduce/pixels/simd/model_simd.h"

namespace ovix::reduce {

namespace {

/// The bounds of a fit come from files and frames; beyond this they would only cost time.
constexpr i32 kHottest = 20000;

i32 WholeCelsius(float kelvin) { return TruncateTo<i32>(static_cast<float>(kelvin - 273.15)); }

bool FitParabola(TArray<double>& from, TArray<double>& to, SParabola& parabola) {
    TArray<double> coefficients;
    if (!LinearLeastSquareFit(from, to, 2, coefficients)) return false;
    std::copy_n(coefficients.data(), 3, parabola.c);
    return true;
}

}  // namespace

void TemperaturesOf(const SPlanckCurve& curve, const STemperatureScale& to, const double* signals, u32 count,
                    float* values) {
    if (!(curve.B >= 0)) {  // no curve: there the ways differ in the sign of a zero
        std::transform(signals, signals + count, values,
                       [&](double s) { return static_cast<float>(to.FromKelvin(KelvinOf(curve, s))); });
        return;
    }
    const double R = curve.R, F = curve.F, floor = FloorOf(curve);
    for (u32 at = 0, n = 0; at < count; at += n) {
        n = std::min(kSignalBlock, count - at);
        double x[kSignalBlock];
        std::transform(signals + at, signals + at + n, x, [=](double signal) {
            const double argument = R / signal + F;
            return !(signal > 0) ? std::numeric_limits<double>::infinity() : argument > floor ? argument : floor;
        });
        simd::LogQuotients({curve.B, 1.0, to.factor, to.offset}, x, values + at, n);
    }
}

bool TakesPowers(const SRadianceLaw& law) { return law.order > 4; }

std::shared_ptr<const double[]> UnscaledRadiances(SRadianceLaw law, u32 count) {
    law.scale = 1.0;
    const std::shared_ptr<double[]> radiances(new double[count]);
    ParallelFor(count, [&](u32 first, u32 last) {
        for (u32 at = first, n = 0; at < last; at += n) {
            n = std::min(kSignalBlock, last - at);
            double block[kSignalBlock];
            for (u32 i = 0; i < n; ++i) block[i] = at + i;
            SCounts counts;
            counts.Load({block, Flt64}, n, EPowers::Double);
            ApplyLaw(law, counts, nullptr, radiances.get() + at);
        }
    });
    return radiances;
}

bool MakeFit(SRadianceFit& fit, const SPlanckCurve& curve, float lowKelvin, float highKelvin) {
    const i32 low = WholeCelsius(lowKelvin);
    const i32 high = WholeCelsius(highKelvin);
    if (high <= low || low < -274 || high > kHottest) return false;
    TArray<double> signals, radiances;
    for (i32 t = low; t <= high; ++t) {
        radiances.Add(Radiance(t, fit.lowWave, fit.highWave, 1.0));
        signals.Add(curve.R / (std::exp(curve.B / (t + 273.15)) - curve.F));
    }
    SParabola forward, back;
    if (!FitParabola(signals, radiances, forward) || (fit.bothWays && !FitParabola(radiances, signals, back))) {
        return false;
    }
    fit.radiance = forward;
    fit.signal = back;
    fit.curve = curve;
    return fit.valid = true;
}

double SAtmosphere::Transmission(double celsius, double distance, double rootOfDistance,
                                 double relativeHumidity) const {
    const double t = std::clamp(celsius, -30.0, 90.0);
    const double saturation = std::exp(t * 0.06939 + 1.5587 - t * t * 0.00027816 + t * t * 6.8455e-7 * t);
    double w = std::sqrt(saturation * relativeHumidity);
    if (w > 6.2365) w = 6.2365;
    const double a1 = w * beta1 + alpha1;
    const double a2 = w * beta2 + alpha2;
    const double e1 = std::exp(-a1 * rootOfDistance);
    const double e2 = std::exp(-a2 * rootOfDistance);

    const double tau = (1 - x) * e2 + e1 * x;
    if (tau < 0.4) return 0.4;
    if (tau > 1.0) {
        const double farAway = (1 - x) * std::exp(a2 * -1000.0) + x * std::exp(a1 * -1000.0);
        return farAway > 1.0 ? 0.4 : 1.0;
    }
    const double slope = -((1 - x) * a2 * e2 + a1 * x * e1);
    return slope > 0 && distance > 0 ? 0.4 : tau;
}

double SOpticalPath::Surroundings(double reflectedSignal, double airSignal, double opticsSignal) const {
    const double e = emissivity, t = air, x = optics;
    if (!(e > 0)) return 0;
    const double reflected = (1 - e) / e * reflectedSignal;
    if (!(t > 0)) return reflected;
    const double withAir = (1 - t) / (t * e) * airSignal + reflected;
    if (!(x > 0) || x >= 1.0) return withAir;
    return withAir + (1 - x) / (x * t * e) * opticsSignal;
}

}  // namespace ovix::reduce
