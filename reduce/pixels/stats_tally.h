#pragma once

#include "core/typed_data.h"

namespace ovix::reduce {

/// The indices by which a result names the pixels of a block: from `first` on, or those of a list.
struct SPlaces {
    u32 first = 0;
    const u32* list = nullptr;

    u32 At(u32 i) const { return list ? list[i] : first + i; }
    /// Those of the block from pixel i on.
    SPlaces From(u32 i) const { return {first + i, list ? list + i : nullptr}; }
};

/// The extremes of a set of pixels; of equal values the first stands. A NaN compares with nothing, so that it stands
/// only where it came first.
struct SExtremes {
    double minimum = 0;
    double maximum = 0;
    u32 minimumIndex = 0;
    u32 maximumIndex = 0;
    bool any = false;

    void Begin(double v, u32 index) { *this = {v, v, index, index, true}; }
    /// Takes pixel i of a block with value v; true where it became the minimum.
    bool Lower(double v, const SPlaces& places, u32 i) {
        if (!(v < minimum)) return false;
        minimum = v;
        minimumIndex = places.At(i);
        return true;
    }
    bool Raise(double v, const SPlaces& places, u32 i) {
        if (!(v > maximum)) return false;
        maximum = v;
        maximumIndex = places.At(i);
        return true;
    }
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
    SExtremes all;       ///< of all pixels, once some did not count
    bool apart = false;  ///< whether some did not count; until then the valid extremes are those of all

    const SExtremes& All() const { return apart ? all : valid; }
};

/// Takes `count` contiguous pixels, of a numeric type, into the tally in their order; `status` may be null.
void AddPixels(STally& tally, STypedData pixels, const u8* status, u32 count, const SPlaces& places);

}  // namespace ovix::reduce
