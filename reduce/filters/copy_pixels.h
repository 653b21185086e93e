#pragma once

#include "core/types.h"

namespace ovix::reduce {

/// How 16-bit pixels stand in a frame, beside the plain little-endian order from the first to the last.
struct SPixelOrder {
    bool swapped = false;   ///< the two bytes of each pixel are exchanged
    bool reversed = false;  ///< the last pixel comes first: the picture is turned by 180 degrees
};

/// Brings `count` 16-bit pixels of a frame into the plain order. Both sides may stand at any address; they must not
/// overlap.
void CopyPixels(void* dest, const void* source, u64 count, SPixelOrder order = {});

}  // namespace ovix::reduce
