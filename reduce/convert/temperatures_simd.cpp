#include "reduce/convert/temperatures_simd.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "reduce/convert/temperatures_simd.cpp"
#include <hwy/foreach_target.h>
//
#include <hwy/contrib/math/math-inl.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace ovix::reduce::simd::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// The logarithm of vectors is off by up to four last places of a double, which single precision hardly ever shows: it
/// could only where the result lies that near to the middle between two floats. So what is computed here counts where
/// both ends of a span 30 times as wide come to the same float; one in some hundred thousand takes the plain formula.
void Temperatures(const SPlanckCurve& curve, const SKelvinScale& to, const double* signals, float* values,
                  std::size_t count) {
    const hn::ScalableTag<double> d;
    const hn::Rebind<float, decltype(d)> df;
    const auto zero = hn::Zero(d), floor = hn::Set(d, FloorOf(curve)), uncertainty = hn::Set(d, 0x1p-46);
    const auto R = hn::Set(d, curve.R), B = hn::Set(d, curve.B), F = hn::Set(d, curve.F);
    const auto factor = hn::Set(d, to.factor), offset = hn::Set(d, to.offset);
    const auto plain = [&](std::size_t i) {
        values[i] = static_cast<float>(to.FromKelvin(KelvinOf(curve, signals[i])));
    };
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
        const auto signal = hn::LoadU(d, signals + i);
        const auto shifted = hn::Add(hn::Div(R, signal), F);
        const auto x = hn::IfThenElse(hn::Gt(shifted, floor), shifted, floor);
        const auto kelvin = hn::IfThenElseZero(hn::Gt(signal, zero), hn::Div(B, hn::Log(d, x)));
        const auto scaled = hn::Mul(kelvin, factor);
        const auto value = hn::Sub(scaled, offset), error = hn::Mul(hn::Abs(scaled), uncertainty);
        const auto least = hn::DemoteTo(df, hn::Sub(value, error));
        const auto greatest = hn::DemoteTo(df, hn::Add(value, error));
        const bool sure = hn::AllTrue(df, hn::Eq(least, greatest)) && hn::AllTrue(d, hn::Lt(x, hn::Set(d, 1e300)));
        if (HWY_LIKELY(sure)) {
            hn::StoreU(least, df, values + i);
        } else {
            for (std::size_t lane = 0; lane < hn::Lanes(d); ++lane) plain(i + lane);
        }
    }
    for (; i < count; ++i) plain(i);
}

}  // namespace ovix::reduce::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ovix::reduce::simd {

HWY_EXPORT(Temperatures);

void Temperatures(const SPlanckCurve& curve, const SKelvinScale& to, const double* signals, float* values,
                  std::size_t count) {
    HWY_DYNAMIC_DISPATCH(Temperatures)(curve, to, signals, values, count);
}

}  // namespace ovix::reduce::simd
#endif
