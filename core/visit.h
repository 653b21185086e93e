#pragma once

#include <concepts>
#include <limits>
#include <type_traits>

#include "core/typed_data.h"
#include "core/types.h"

namespace ovix {

/// Stands for the element type `T` in a call to a generic callable.
template <class T>
struct TElement {
    using Type = T;
};

/// Calls `f(TElement<T>{})` with the element type that `type` names and answers its result (true when it has none).
/// False for a type that is not numeric, with nothing called.
///
///     Visit(data.type, [&]<class T>(TElement<T>) { Sort(static_cast<T*>(data.data), count); });
template <class F>
bool Visit(EDataType type, F&& f) {
    const auto call = [&]<class T>(TElement<T> element) {
        if constexpr (std::is_void_v<decltype(f(element))>) {
            f(element);
            return true;
        } else {
            return static_cast<bool>(f(element));
        }
    };
    switch (type) {
        case Int8:
            return call(TElement<i8>{});
        case UInt8:
            return call(TElement<u8>{});
        case Int16:
            return call(TElement<i16>{});
        case UInt16:
            return call(TElement<u16>{});
        case Int32:
            return call(TElement<i32>{});
        case UInt32:
            return call(TElement<u32>{});
        case Int64:
            return call(TElement<i64>{});
        case UInt64:
            return call(TElement<u64>{});
        case Flt32:
            return call(TElement<float>{});
        case Flt64:
            return call(TElement<double>{});
        default:
            return false;
    }
}

constexpr bool IsNumeric(EDataType type) { return type <= Flt64; }

/// Bytes of one element; 0 for a type that is not numeric.
constexpr std::size_t ElementSize(EDataType type) {
    constexpr u8 kSizes[] = {1, 1, 2, 2, 4, 4, 8, 8, 4, 8};
    return IsNumeric(type) ? kSizes[type] : 0;
}

template <class T>
constexpr EDataType DataTypeOf() {
    if constexpr (std::is_same_v<T, i8>) return Int8;
    if constexpr (std::is_same_v<T, u8>) return UInt8;
    if constexpr (std::is_same_v<T, i16>) return Int16;
    if constexpr (std::is_same_v<T, u16>) return UInt16;
    if constexpr (std::is_same_v<T, i32>) return Int32;
    if constexpr (std::is_same_v<T, u32>) return UInt32;
    if constexpr (std::is_same_v<T, i64>) return Int64;
    if constexpr (std::is_same_v<T, u64>) return UInt64;
    if constexpr (std::is_same_v<T, float>) return Flt32;
    if constexpr (std::is_same_v<T, double>) return Flt64;
    return NoPixels;
}

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
