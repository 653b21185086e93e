#pragma once

#include "core/numeric_cast.h"

namespace ovix::reduce {

/// The nearest whole number, halves away from zero; beyond +-1e18, where halves no longer exist, the value is taken as
/// it stands. NaN and what 64 bits do not hold give the least one.
constexpr i64 RoundToInteger(double value) {
    if (value > -1e18 && value < 1e18) value += value < 0 ? -0.5 : 0.5;
    return TruncateTo<i64>(value);
}

}  // namespace ovix::reduce
