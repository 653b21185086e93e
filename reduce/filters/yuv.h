#pragma once

#include "core/types.h"

namespace ovix::reduce {

/// Where the luma of two neighbouring pixels and the colour that they share stand in their four bytes.
struct SYuvOrder {
    u8 y0, u, y1, v;
};
inline constexpr SYuvOrder kYUY2Order{0, 1, 2, 3};
inline constexpr SYuvOrder kUYVYOrder{1, 0, 3, 2};

constexpr u8 ClipToByte(i32 value) { return static_cast<u8>(value < 0 ? 0 : value > 255 ? 255 : value); }

/// One pixel as red, green, blue: BT.601 with studio levels, in 8-bit fixed point.
constexpr void YuvPixelToRGB(u8* rgb, u8 y, u8 u, u8 v) {
    const i32 c = 298 * (y - 16) + 128, d = u - 128, e = v - 128;
    rgb[0] = ClipToByte((c + 409 * e) >> 8);
    rgb[1] = ClipToByte((c - 100 * d - 208 * e) >> 8);
    rgb[2] = ClipToByte((c + 516 * d) >> 8);
}

/// Converts pixels / 2 pairs, 4 bytes each, to 6 bytes each. The last pixel of an odd number is not written.
void YuvToRGB(u8* rgb, const u8* yuv, u64 pixels, SYuvOrder order);

}  // namespace ovix::reduce
