#pragma once

#include "core/typed_data.h"
#include "reduce/pixels/rounding.h"

namespace ovix::reduce {

/// The place of a pixel in a table that is indexed by signal value: x limited to lower .. upper, rounded half away from
/// zero, the low 16 bits. A NaN passes both limits and comes to place 0.
constexpr u16 LutIndex(float x, float lower, float upper) {
    const float place = lower > x ? lower : x > upper ? upper : RoundHalfAway(x);
    return static_cast<u16>(TruncateTo<i32>(place));
}

/// Finds the places of `count` pixels in a row. Answers where they stand: in `places`, or in the pixels themselves when
/// those are their own places.
using FLutIndexSpan = const u16* (*)(const void* pixels, u16* places, std::size_t count, u16 lower, u16 upper);

/// For pixels of a numeric type (`UInt64` counts as unsigned); null for any other type.
FLutIndexSpan LutIndexFunction(EDataType type);

}  // namespace ovix::reduce
