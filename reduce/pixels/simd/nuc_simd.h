#pragma once

#include <cstddef>

#include "core/types.h"
#include "reduce/pixels/formulas.h"

/// The correction of the most frequent types, fused to one loop, and the pixels that a replacement map moves: in the
/// widest registers that the processor has, chosen at run time.
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

/// Pixels that are looked at in one call, at most.
inline constexpr u32 kMovedBlock = 4096;

/// The room for what a call finds: the widest register may be stored behind the last one.
struct SMovedPixels {
    u32 places[kMovedBlock + 64];
    u32 count;
};

/// Finds the pixels of a block that a replacement map moves: those i below `count` with map[i] != first + i, where
/// `first` is the frame index of the block's first pixel.
void FindMoved(const u32* map, u32 first, u32 count, SMovedPixels& moved);

/// A block of counts that become places of a table.
struct SCountLook {
    const u16* counts;
    const float* gain;
    const i16* offset;  ///< null for none
    const u32* map;     ///< null for none
    u32 first;          ///< the frame index of the block's first pixel
    TLimits<u16> limits;
    const float* table;
};

/// `Correct`, the entries at the corrected counts, and `FindMoved` in one loop: then the processor fetches tables of
/// the correction while it gathers entries. The moved pixels are corrected as if there were no map.
void CorrectAndFetch(const SCountLook& look, u16* places, float* values, u32 count, SMovedPixels& moved);

}  // namespace ovix::reduce::simd
