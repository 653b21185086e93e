#pragma once

#include <limits>

#include "core/numeric_cast.h"

namespace ovix::reduce {

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

}  // namespace ovix::reduce
