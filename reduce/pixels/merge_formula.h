#pragma once

#include "reduce/pixels/limits.h"
#include "reduce/pixels/rounding.h"

namespace ovix::reduce {

/// Which terms a correction has; the others are not read.
struct SMergeTerms {
    bool gain;
    bool offset;
    bool clip;
};

/// The corrected count of a pixel that is to be merged. Without a clip the product is rounded before the offset is
/// added; with one the sum is rounded, but a limit that takes its place is not. Sums without a gain are whole as they
/// are.
template <SMergeTerms kTerms>
constexpr u16 MergeCount(u16 x, float gain, i16 offset, const TLimits<float>& limits) {
    float value = x;
    if (kTerms.gain) value = value * gain;
    if (kTerms.gain && !kTerms.clip) value = RoundHalfAway(value);
    if (kTerms.offset) value = value + static_cast<float>(offset);
    if (kTerms.clip) {
        const float limited = limits(value);
        value = kTerms.gain && limited == value ? RoundHalfAway(value) : limited;
    }
    return static_cast<u16>(TruncateTo<i32>(value));
}

}  // namespace ovix::reduce
