#include "reduce/pixels/simd/model_simd.h"

#include <cmath>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "reduce/pixels/simd/model_simd.cpp"
#include <hwy/foreach_target.h>
//
#include <hwy/contrib/math/math-inl.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace ovix::reduce::simd::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

void LimitAll(const SLimitRule& limits, double* values, u8* flags, std::size_t count) {
    const hn::ScalableTag<double> d;
    const hn::Rebind<i32, decltype(d)> d32;
    const hn::Rebind<u8, decltype(d)> d8;
    const auto lower = hn::Set(d, limits.lower), upper = hn::Set(d, limits.upper);
    const auto underflow = hn::Set(d, limits.underflow), overflow = hn::Set(d, limits.overflow);
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
        const auto v = hn::LoadU(d, values + i);
        const auto inside = hn::And(hn::Gt(v, lower), hn::Lt(v, upper));
        const auto over = hn::Gt(v, overflow), under = hn::Lt(v, underflow);
        const auto cut = hn::IfThenElse(over, overflow, hn::IfThenElse(under, underflow, v));
        const auto bits =
            hn::IfThenElse(over, hn::Set(d, 4.0), hn::IfThenElse(under, hn::Set(d, 2.0), hn::Set(d, 1.0)));
        hn::StoreU(hn::IfThenElse(inside, v, cut), d, values + i);
        hn::StoreU(hn::DemoteTo(d8, hn::DemoteTo(d32, hn::IfThenZeroElse(inside, bits))), d8, flags + i);
    }
    for (; i < count; ++i) flags[i] = Limit(values[i], limits);
}

/// The logarithm of vectors is off by up to four last places of a double, which single precision hardly ever shows: it
/// could only where the result lies that near to the middle between two floats. So what is computed here counts where
/// both ends of a span 30 times as wide come to the same float; one in some hundred thousand takes the plain formula.
void LogQuotients(const SLogQuotient& quotient, const double* x, float* values, std::size_t count) {
    const hn::ScalableTag<double> d;
    const hn::Rebind<float, decltype(d)> df;
    const auto numerator = hn::Set(d, quotient.numerator), width = hn::Set(d, quotient.width);
    const auto factor = hn::Set(d, quotient.factor), offset = hn::Set(d, quotient.offset);
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
        const auto v = hn::LoadU(d, x + i);
        const auto usual = hn::And(hn::Gt(v, hn::Set(d, 1e-300)), hn::Lt(v, hn::Set(d, 1e300)));
        const auto infinite = hn::Gt(v, hn::Set(d, 1.7976931348623157e308));
        const auto kelvin = hn::IfThenZeroElse(
            infinite, hn::Div(numerator, hn::Mul(hn::Log(d, hn::IfThenElse(usual, v, hn::Set(d, 2.0))), width)));
        const auto scaled = hn::Mul(kelvin, factor);
        const auto value = hn::Sub(scaled, offset), error = hn::Mul(hn::Abs(scaled), hn::Set(d, 0x1p-46));
        const auto least = hn::DemoteTo(df, hn::Sub(value, error));
        const auto greatest = hn::DemoteTo(df, hn::Add(value, error));
        if (HWY_LIKELY(hn::AllTrue(df, hn::Eq(least, greatest)) && hn::AllTrue(d, hn::Or(usual, infinite)))) {
            hn::StoreU(least, df, values + i);
        } else {
            for (std::size_t lane = i; lane < i + hn::Lanes(d); ++lane) {
                values[lane] = static_cast<float>(quotient.Of(x[lane]));
            }
        }
    }
    for (; i < count; ++i) values[i] = static_cast<float>(quotient.Of(x[i]));
}

}  // namespace ovix::reduce::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ovix::reduce::simd {

HWY_EXPORT(LimitAll);
HWY_EXPORT(LogQuotients);

void LimitAll(const SLimitRule& limits, double* values, u8* flags, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(LimitAll)(limits, values, flags, count);
}

double SLogQuotient::Of(double x) const {
    const double kelvin = std::isinf(x) && x > 0 ? 0.0 : numerator / (std::log(x) * width);
    return kelvin * factor - offset;
}

void LogQuotients(const SLogQuotient& quotient, const double* x, float* values, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(LogQuotients)(quotient, x, values, count);
}

}  // namespace ovix::reduce::simd
#endif
