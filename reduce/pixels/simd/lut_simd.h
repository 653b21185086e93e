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

/// How many bytes from the start on are `value`.
std::size_t LeadingBytes(const u8* bytes, std::size_t count, u8 value);
/// Whether all are.
inline bool AllBytesAre(const u8* bytes, std::size_t count, u8 value) {
    return LeadingBytes(bytes, count, value) == count;
}

}  // namespace ovix::reduce::simd
