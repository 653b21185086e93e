#pragma once

namespace ovix::reduce {

/// The two limits of a clip, in the type that is clipped.
template <class T>
struct TLimits {
    T low;
    T high;

    /// The low limit is tested first, so it wins when the two are crossed. A NaN passes.
    constexpr T operator()(T value) const { return value < low ? low : value > high ? high : value; }
};

}  // namespace ovix::reduce
