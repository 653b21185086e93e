#pragma once

#include <cstddef>

#include "core/types.h"

namespace ovix::reduce::simd {

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

}  // namespace ovix::reduce::simd
