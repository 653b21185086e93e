#pragma once

#include "core/numeric_cast.h"

namespace ovix::reduce {

/// The place of a pixel in a table that is indexed by signal value: x limited to lower .. upper, rounded half away from
/// zero. NaN passes both limits, truncates to the least 32-bit integer and keeps its low bits: place 0.
constexpr u16 LutIndex(float x, float lower, float upper) {
    const float limited = lower > x ? lower : x > upper ? upper : x;
    const i32 whole = TruncateTo<i32>(limited);  // not below 0, as `lower` is not, NaN aside
    return static_cast<u16>(whole + (limited - static_cast<float>(whole) >= 0.5F ? 1 : 0));
}

}  // namespace ovix::reduce
