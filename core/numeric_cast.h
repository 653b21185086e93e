#pragma once

#include <concepts>
#include <limits>
#include <type_traits>

#include "core/types.h"

namespace ovix {

/// A floating value truncated to `Int`; NaN, infinities and values beyond give the least `Int`. This is what the
/// conversion instructions of x86-64 answer, here with a defined meaning for every value and machine.
template <std::signed_integral Int, std::floating_point From>
constexpr Int TruncateTo(From value) {
    constexpr From kLimit = -static_cast<From>(std::numeric_limits<Int>::min());
    return value >= -kLimit && value < kLimit ? static_cast<Int>(value) : std::numeric_limits<Int>::min();
}

/// A number moved between element types. Nothing saturates: integers keep their low bits, floating values are truncated
/// to 64 bits first and then keep the low ones, and only `UInt64` takes values from 2^63 upward correctly.
template <class To, class From>
    requires std::is_arithmetic_v<To> && std::is_arithmetic_v<From>
constexpr To NumericCast(From value) {
    if constexpr (std::is_floating_point_v<From> && std::is_integral_v<To>) {
        if constexpr (std::is_same_v<To, u64>) {
            constexpr From kTwo63 = static_cast<From>(9223372036854775808.0);
            if (value >= kTwo63 && value < 2 * kTwo63) return static_cast<u64>(value);
        }
        return static_cast<To>(TruncateTo<i64>(value));
    } else {
        return static_cast<To>(value);
    }
}

}  // namespace ovix
