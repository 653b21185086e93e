#pragma once

#include <cstddef>

#include "core/types.h"
#include "reduce/pixels/limits.h"

/// The correction of the most frequent types, fused to one loop, in the widest registers that the processor has, chosen
/// at run time.
namespace ovix::reduce::simd {

/// Gain and, when `offset` is not null, offset; then the cast and, when `limits` is not null, the clip. Limits of
/// integers must not be crossed.
/// `x` and `dest` may be one buffer when they are of one type.
void Correct(const u16* x, const float* gain, const i16* offset, u16* dest, std::size_t count,
             const TLimits<u16>* limits);
void Correct(const u16* x, const float* gain, const i16* offset, float* dest, std::size_t count,
             const TLimits<float>* limits);
void Correct(const float* x, const float* gain, const i16* offset, float* dest, std::size_t count,
             const TLimits<float>* limits);

}  // namespace ovix::reduce::simd
