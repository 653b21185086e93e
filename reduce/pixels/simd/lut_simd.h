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

/// Whether the gather instruction is faster than single loads on this machine.
bool GatheringPays();
/// The entries of a table at `count` places, one behind the other.
void FetchValues(const float* table, const u16* places, float* values, std::size_t count);
void FetchStatus(const u8* table, const u16* places, u8* status, std::size_t count);

/// A stretch of a table of status bytes as few runs of one value each.
struct SStatusRuns {
    static constexpr u32 kMost = 8;
    u16 starts[kMost];  ///< ascending; the first is that of the stretch
    u8 values[kMost];
    u32 count = 0;
};
/// The entries at `count` places, all of which lie in the stretch: comparing is much faster than fetching bytes.
void StatusOfRuns(const SStatusRuns& runs, const u16* places, u8* status, std::size_t count);

/// How many bytes from the start on are `value`.
std::size_t LeadingBytes(const u8* bytes, std::size_t count, u8 value);
}  // namespace ovix::reduce::simd
