#pragma once

#include <limits>
#include <type_traits>

#include "core/types.h"
#include "core/visit.h"

/// The arithmetic of one pixel: what the vector loops must come to, and their own words where a value is beyond them.
namespace ovix::reduce {

/// The two limits of a clip, in the type that is clipped.
template <class T>
struct TLimits {
    T low;
    T high;

    /// The low limit is tested first, so it wins when the two are crossed. A NaN passes.
    constexpr T operator()(T value) const { return value < low ? low : value > high ? high : value; }
};

/// The nearest whole number, halves away from zero, by way of a truncation to 32 bits. NaN and values that 32 bits do
/// not hold give +-2^31.
constexpr float RoundHalfAway(float x) {
    const i32 whole = TruncateTo<i32>(x);
    const float fraction = x - static_cast<float>(whole);
    u32 rounded = static_cast<u32>(whole);
    if (x >= 0 && fraction >= 0.5f) ++rounded;
    if (x < 0 && -fraction >= 0.5f) --rounded;
    return static_cast<float>(static_cast<i32>(rounded));
}

/// The place of a pixel in a table that is indexed by signal value: x limited to lower .. upper, rounded half away from
/// zero, the low 16 bits. A NaN passes both limits and comes to place 0.
constexpr u16 LutIndex(float x, float lower, float upper) {
    const float place = lower > x ? lower : x > upper ? upper : RoundHalfAway(x);
    return static_cast<u16>(TruncateTo<i32>(place));
}

// The correction of one pixel, before its result is cast to the destination type. The source alone decides the
// precision: a `Flt64` source is computed in double, every other in single.

template <class S>
using TNucFloat = std::conditional_t<std::is_same_v<S, double>, double, float>;

template <class S>
constexpr TNucFloat<S> NucGainOffset(S x, float gain, i16 offset) {
    using W = TNucFloat<S>;
    return static_cast<W>(x) * static_cast<W>(gain) + static_cast<W>(offset);
}

template <class S>
constexpr TNucFloat<S> NucGain(S x, float gain) {
    using W = TNucFloat<S>;
    return static_cast<W>(x) * static_cast<W>(gain);
}

/// Integers are summed in their promoted type, where the sum wraps.
template <class S>
constexpr auto NucOffset(S x, i16 offset) {
    if constexpr (std::is_floating_point_v<S>) {
        return static_cast<S>(offset) + x;
    } else {
        using W = decltype(x + offset);
        using Bits = std::make_unsigned_t<W>;
        return static_cast<W>(static_cast<Bits>(static_cast<W>(x)) + static_cast<Bits>(static_cast<W>(offset)));
    }
}

/// Which terms a correction has; the others are not read.
struct SMergeTerms {
    bool gain;
    bool offset;
    bool clip;
};

/// The corrected count of a pixel that is to be merged. Without a clip the product is rounded before the offset is
/// added; with one the sum is rounded, but a limit that takes its place is not. Sums without a gain are whole as they
/// are.
template <SMergeTerms kTerms>
constexpr u16 MergeCount(u16 x, float gain, i16 offset, const TLimits<float>& limits) {
    float value = x;
    if (kTerms.gain) value = value * gain;
    if (kTerms.gain && !kTerms.clip) value = RoundHalfAway(value);
    if (kTerms.offset) value = value + static_cast<float>(offset);
    if (kTerms.clip) {
        const float limited = limits(value);
        value = kTerms.gain && limited == value ? RoundHalfAway(value) : limited;
    }
    return static_cast<u16>(TruncateTo<i32>(value));
}

/// The place of x in an ascending table of `count` entries, at least 2: m in 1 .. count - 1 with
/// table[m - 1] <= x <= table[m]. Meant for x inside the table; for any other x (NaN too), and for a table that does
/// not ascend, m is some place in that range.
inline u32 FindInterval(const double* table, u32 count, double x) {
    u32 lo = 1;
    u32 hi = count - 1;
    u32 m = count / 2;
    while (lo <= hi) {
        if (table[m] >= x) {
            if (x >= table[m - 1]) break;
            if (table[m] > x) {
                hi = m - 1;
            } else {
                lo = m + 1;
            }
        } else if (table[m] < x) {
            lo = m + 1;
        } else {
            break;  // NaN compares with nothing: the search would not end
        }
        m = (lo + hi) / 2;
    }
    return m < 1 ? 1 : m;
}

/// What a table says of x.
struct STableValue {
    double value;
    bool inside;  ///< false where an end of the table stands for a place outside
};

/// Linear interpolation in the parallel tables xs, which ascend, and ys. NaN counts as inside and gives NaN.
///
/// `near` is any place in 1 .. count - 1 and becomes that of x: of values one after the other most fall where the one
/// before fell.
inline STableValue Interpolate(const double* xs, const double* ys, u32 count, double x, u32& near) {
    if (x < xs[0]) return {ys[0], false};
    if (x > xs[count - 1]) return {ys[count - 1], false};
    if (!(xs[near - 1] < x && x < xs[near])) near = FindInterval(xs, count, x);
    const u32 m = near;
    return {(x - xs[m - 1]) / (xs[m] - xs[m - 1]) * (ys[m] - ys[m - 1]) + ys[m - 1], true};
}
inline STableValue Interpolate(const double* xs, const double* ys, u32 count, double x) {
    u32 near = 1;
    return Interpolate(xs, ys, count, x, near);
}

}  // namespace ovix::reduce
