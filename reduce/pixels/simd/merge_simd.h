#pragma once

#include <cstddef>

#include "core/types.h"
#include "reduce/pixels/formulas.h"

/// Steps of the merging of presets in the widest registers that the processor has, chosen at run time.
namespace ovix::reduce::simd {

/// `MergeCount` of pixels in a row. A null table is no term; null limits do not clip.
void CorrectForMerge(const u16* x, const float* gain, const i16* offset, u16* dest, std::size_t count,
                     const TLimits<float>* limits);

/// Set in a status byte as long as no preset has qualified for the pixel.
inline constexpr u8 kPending = 0x80;

/// One preset in the walk over all of them.
struct SMergeStep {
    u8 preset;
    /// For the first preset all pixels are pending, and nothing is read from `values` and `status`; after the last one
    /// none is.
    bool first;
    bool last;
    /// A value qualifies when it is not above the threshold, or, with `fromLast`, when it is not below it.
    bool fromLast;
    u16 threshold;
};

/// Gives every pending pixel the value and the number of this preset. Answers whether any is pending still.
bool TakePending(const u16* corrected, const SMergeStep& step, u16* values, u8* status, std::size_t count);
bool TakePending(const float* corrected, const SMergeStep& step, float* values, u8* status, std::size_t count);

/// Whether any of at least one pixel is pending.
bool AnyPending(const u8* status, std::size_t count);

}  // namespace ovix::reduce::simd
