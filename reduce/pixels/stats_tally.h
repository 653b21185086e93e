#pragma once

#include "core/typed_data.h"
#include "reduce/pixels/simd/float_sums.h"

namespace ovix::reduce {

/// The indices by which a result names the pixels of a block.
struct SPlaces {
    u32 first = 0;               ///< that of pixel 0
    const u32* list = nullptr;   ///< or one for each pixel
    u32 rowLength = 0;           ///< pixels of a row, where rows of a wider frame stand one behind the other
    u32 stride = 0;              ///< from row to row
    const u8* chosen = nullptr;  ///< the block holds only those pixels whose byte here is not 0
    u32 passed = 0;              ///< pixels before the block

    u32 At(u32 i) const;
    /// Those of the block from pixel i on.
    SPlaces From(u32 i) const {
        SPlaces rest = *this;
        rest.passed += i;
        return rest;
    }
};

/// The extremes of a set of pixels; of equal values the first stands. A NaN compares with nothing, so that it stands
/// only where it came first.
struct SExtremes {
    double minimum = 0;
    double maximum = 0;
    u32 minimumIndex = 0;
    u32 maximumIndex = 0;
    bool any = false;
};

/// The running figures of a walk over pixels.
struct STally {
    simd::SSums sums;
    u32 count = 0;
    u8 statusUnion = 0;
    u8 minimumStatus = 0;
    u8 maximumStatus = 0;
    SExtremes valid;
    SExtremes all;       ///< of all pixels, once some did not count
    bool apart = false;  ///< whether some did not count; until then the valid extremes are those of all

    const SExtremes& All() const { return apart ? all : valid; }
};

/// Pixels that are gathered, masked or compared with their status together.
inline constexpr u32 kTallyBlock = 2048;

/// Takes `count` contiguous pixels, of a numeric type, into the tally in their order. Of these a pixel is selected if
/// its byte in `mask` is not 0. `status` and `mask` may be null.
void AddPixels(STally& tally, STypedData pixels, const u8* status, const u8* mask, u32 count, const SPlaces& places);

}  // namespace ovix::reduce
