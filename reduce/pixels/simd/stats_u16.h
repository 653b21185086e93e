#pragma once

#include "reduce/pixels/exact_figures.h"

/// Vector loops for the form of raw counts. They give what plain loops give, on whatever instructions the machine has.
namespace ovix::reduce::simd {

/// As many pixels a call may take, so that sums fit the lanes.
inline constexpr u32 kMostPixels = 1U << 14;

/// The figures of 1 to `kMostPixels` pixels.
SExactFigures<u16> MeasureUInt16(const u16* pixels, u32 count);

/// The place of the first pixel that equals `value`; `count` if none does.
u32 FindUInt16(const u16* pixels, u32 count, u16 value);

}  // namespace ovix::reduce::simd
