#pragma once

#include "core/types.h"

/// Sums of floats to the bits of one addition after the other, made in lanes.
///
/// Between two powers of two all doubles stand on one grid, and an addition that stays there rounds the term to the
/// grid, whatever the sum is; so terms can be rounded apart and added in any order. Only a term that lies half-way
/// between two points of the grid goes to the one that makes the sum even. Where a sum may leave its grid, the
/// additions are made one after the other: for squares wherever the sum doubles, which is seldom; for values where it
/// comes near 0, and then only if their magnitudes differ by more than a factor of 2^29 or so. A frame of such values
/// is the worst case, with one dependent addition for each pixel.
namespace ovix::reduce::simd {

/// The pixels that a call may take.
inline constexpr u32 kFloatBlock = 1024;

/// What of a block decides how it can be summed. The extremes leave NaN out, and are crossed where nothing is left.
struct SFloatRange {
    float minimum;
    float maximum;
    float least;  ///< magnitude above 0; infinite when there is none
    float most;   ///< magnitude
    bool hasNaN;
};

/// That of 1 to `kFloatBlock` pixels.
SFloatRange MeasureFloats(const float* pixels, u32 count);

/// The place of the first pixel that equals `value`; `count` if none does.
u32 FindFloat(const float* pixels, u32 count, float value);

/// The running sums of a walk over pixels.
struct SSums {
    double values = 0;
    double squares = 0;

    /// Adds 1 to `kFloatBlock` pixels whose range is at hand.
    void Add(const float* pixels, u32 count, const SFloatRange& range);
};

}  // namespace ovix::reduce::simd
