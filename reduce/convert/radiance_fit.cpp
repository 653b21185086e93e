#include "reduce/convert/radiance_fit.h"

#include <algorithm>

#include "core/least_squares.h"
#include "core/numeric_cast.h"
#include "reduce/pixels/radiance.h"

namespace ovix::reduce {

namespace {

/// The bounds come from files and frames; beyond this they would only cost time.
constexpr i32 kHottest = 20000;

i32 WholeCelsius(float kelvin) { return TruncateTo<i32>(static_cast<float>(kelvin - 273.15)); }

}  // namespace

bool SParabola::Fit(TArray<double>& from, TArray<double>& to) {
    TArray<double> coefficients;
    if (!LinearLeastSquareFit(from, to, 2, coefficients)) return false;
    std::copy_n(coefficients.data(), 3, c);
    return true;
}

bool CRadianceFit::Make(const SPlanckCurve& curve, float lowKelvin, float highKelvin) {
    const i32 low = WholeCelsius(lowKelvin);
    const i32 high = WholeCelsius(highKelvin);
    if (high <= low || low < -274 || high > kHottest) return false;
    TArray<double> signals, radiances;
    for (i32 t = low; t <= high; ++t) {
        radiances.Add(Radiance(t, lowWave_, highWave_, 1.0));
        signals.Add(curve.R / (std::exp(curve.B / (t + 273.15)) - curve.F));
    }
    SParabola forward, back;
    if (!forward.Fit(signals, radiances) || (bothWays_ && !back.Fit(radiances, signals))) return false;
    radiance_ = forward;
    signal_ = back;
    curve_ = curve;
    return valid_ = true;
}

}  // namespace ovix::reduce
