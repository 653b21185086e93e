#pragma once

#include "core/types.h"

namespace ovix::reduce {

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
