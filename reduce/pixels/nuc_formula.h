#pragma once

#include <type_traits>

#include "core/types.h"

/// The correction of one pixel, before its result is cast to the destination type. The source alone decides the
/// precision: a `Flt64` source is computed in double, every other in single.
namespace ovix::reduce {

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

}  // namespace ovix::reduce
