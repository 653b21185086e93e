#pragma once

#include <cstddef>

#include "core/types.h"

/// Steps of the table kernels in the widest registers that the processor has, chosen at run time.
namespace ovix::reduce::simd {

/// `LutIndex` of 16-bit counts.
void LimitToPlaces(const u16* pixels, u16* places, std::size_t count, u16 lower, u16 upper);
/// `LutIndex` of single-precision values.
void RoundToPlaces(const float* pixels, u16* places, std::size_t count, u16 lower, u16 upper);

struct SPlaceRange {
    u16 least;
    u16 greatest;
};

/// The least and the greatest of at least one place.
SPlaceRange RangeOf(const u16* places, std::size_t count);

/// Whether all bytes are `value`.
bool AllBytesAre(const u8* bytes, std::size_t count, u8 value);

}  // namespace ovix::reduce::simd
