#pragma once

#include "core/typed_data.h"

namespace ovix::reduce {

/// The extremes of a set of pixels; of equal values the first stands.
struct SExtremes {
    double minimum = 0;
    double maximum = 0;
    u32 minimumIndex = 0;
    u32 maximumIndex = 0;
    bool any = false;
};

/// The running figures of a walk over pixels.
struct STally {
    double sum = 0;
    double squares = 0;
    u32 count = 0;
    u8 statusUnion = 0;
    u8 minimumStatus = 0;
    u8 maximumStatus = 0;
    SExtremes valid;
    SExtremes all;  ///< tracked with a status only
};

/// The indices by which a result names the pixels of a block: from `first` on, or those of a list.
struct SPlaces {
    u32 first = 0;
    const u32* list = nullptr;

    u32 At(u32 i) const { return list ? list[i] : first + i; }
};

/// Takes `count` contiguous pixels, of a numeric type, into the tally in their order; `status` may be null.
void AddPixels(STally& tally, STypedData pixels, const u8* status, u32 count, SPlaces places);

}  // namespace ovix::reduce
