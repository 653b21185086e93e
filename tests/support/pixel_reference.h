#pragma once

#include <cmath>

#include "core/typed_data.h"

/// What pixel kernels have to compute, said once more and plainly.
namespace ovix::test {

using Real = long double;

inline Real Polynomial(const double* a, i32 order, Real x) {
    Real sum = 0;
    for (i32 k = order; k >= 0; --k) sum = sum * x + a[k];
    return sum;
}
inline Real Lookup(const double* xs, const double* ys, i32 count, Real x) {
    if (x <= xs[0]) return ys[0];
    for (i32 i = 1; i < count; ++i)
        if (x <= xs[i]) return ys[i - 1] + (ys[i] - ys[i - 1]) * ((x - xs[i - 1]) / (xs[i] - xs[i - 1]));
    return ys[count - 1];
}
inline Real FromCelsius(Real t, ETempType scale) {
    if (scale == Fahrenheit) return t * 1.8L + 32;
    return scale == Kelvin ? t + 273.15L : scale == Rankine ? (t + 273.15L) * 1.8L : t;
}
/// Planck's law between two wavelengths in micrometres, by the midpoint rule.
inline double BandRadiance(double celsius, double low, double high) {
    double sum = 0;
    for (double w = low + 0.0005; w < high; w += 0.001)
        sum += 0.001 * 11910.7 / (std::pow(w, 5) * (std::exp(14388.4 / (w * (celsius + 273.15))) - 1));
    return sum;
}
/// Degrees Celsius of a black body's radiance between 8 and 12 micrometres.
inline Real Planck(Real radiance) { return 14388.3L / (10 * std::log1p(11910.66L * 4 / (1e5L * radiance))) - 273.15L; }

/// A number in another type: the low bits of its whole part, through 64 signed bits; what those do not hold is their
/// least, but `UInt64` takes values up to 2^64.
template <class D, class S>
D Cast(S value) {
    if constexpr (std::is_floating_point_v<D>) {
        return static_cast<D>(value);
    } else if constexpr (std::is_integral_v<S>) {
        return static_cast<D>(static_cast<u64>(value));
    } else {
        const double x = static_cast<double>(value);
        if (std::is_same_v<D, u64> && x >= 0x1p63 && x < 0x1p64) return static_cast<D>(static_cast<u64>(x));
        const i64 whole = x >= -0x1p63 && x < 0x1p63 ? static_cast<i64>(x) : INT64_MIN;
        return static_cast<D>(static_cast<u64>(whole));
    }
}

/// Half away from zero, through 32 bits: what those do not hold is their least, and one less than that their greatest.
inline float Round(float x) {
    if (x < -0x1p31F) return 0x1p31F;
    return x < 0x1p31F ? std::round(x) : -0x1p31F;
}

inline u32 Place(float x, float lower, float upper) {
    if (lower > x) return static_cast<u32>(lower);
    if (x > upper) return static_cast<u32>(upper);
    return std::isnan(x) ? 0 : static_cast<u32>(std::round(x));
}

}  // namespace ovix::test
