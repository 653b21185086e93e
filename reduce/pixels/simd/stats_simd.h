#pragma once

#include <algorithm>

#include "core/types.h"

/// Vector loops for statistics. They give what plain loops give, on whatever instructions the machine has.
namespace ovix::reduce::simd {

/// What can be found of integer pixels in any order.
template <class T>
struct SExactFigures {
    T minimum;
    T maximum;
    i64 sum;
    u64 squares;

    void Include(const T* pixels, u32 count) {
        for (u32 i = 0; i < count; ++i) {
            minimum = std::min(minimum, pixels[i]);
            maximum = std::max(maximum, pixels[i]);
            sum += pixels[i];
            squares += static_cast<u64>(i64{pixels[i]} * pixels[i]);
        }
    }
};

/// As many pixels a call may take, so that sums fit the lanes.
inline constexpr u32 kMostPixels = 1U << 14;

/// The figures of 1 to `kMostPixels` pixels.
SExactFigures<u16> MeasureUInt16(const u16* pixels, u32 count);

/// The place of the first pixel that equals `value`; `count` if none does.
u32 FindUInt16(const u16* pixels, u32 count, u16 value);

/// What may be written behind the last element of an output.
inline constexpr u32 kSlack = 64;

/// The pixels whose byte in `chosen` is not 0, one behind the other; answers how many. `out` has room for `count` and
/// `kSlack` elements.
u32 Collect(const u32* pixels, const u8* chosen, u32 count, u32* out);

/// All pixels in their places, but `fill` for those whose byte in `chosen` is 0; answers how many are chosen.
u32 FillOthers(const u16* pixels, const u8* chosen, u32 count, u16 fill, u16* out);

}  // namespace ovix::reduce::simd
