#pragma once

#include "core/types.h"

/// The image of a frame on its way to a destination: byte order, turning, colours; and one image out of a packet.
/// Sources and destinations may stand at any address and must not overlap.
namespace ovix::reduce {

/// Bytes of an image of 16-bit pixels, which in many families is also where its trailer begins.
constexpr u64 ImageSize(u16 width, u16 height) { return u64{2} * width * height; }

/// How 16-bit pixels stand in a frame, beside the plain little-endian order from the first to the last.
struct SPixelOrder {
    bool swapped = false;   ///< the two bytes of each pixel are exchanged
    bool reversed = false;  ///< the last pixel comes first: the picture is turned by 180 degrees
};
/// Brings `count` 16-bit pixels into the plain order.
void CopyPixels(void* dest, const void* source, u64 count, SPixelOrder order = {});
/// The bits of `mask` alone.
void CopyMaskedPixels(void* dest, const void* source, u64 count, u16 mask);

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
/// Blue, green, red with the bottom line first, to red, green, blue with the top line first.
void BGRToRGB(u8* rgb, const u8* bgr, u16 width, u16 height);

/// A camera buffer of several images, one behind the other, and one tail for all behind them. Stored frames consist of
/// one of the images and the tail.
struct SPacket {
    const u8* bytes;
    u64 size;
    u64 imageSize;
    u16 images;

    u64 ImagesSize() const { return images * imageSize; }
    /// Zero also when not even the images are there.
    u64 TailSize() const { return size > ImagesSize() ? size - ImagesSize() : 0; }

    /// Puts image `index` and the tail into `dest`. False, with nothing written, when there is no such image, when the
    /// buffer does not hold all images, and when `dest` has no room.
    bool Store(u16 index, void* dest, u64 destSize) const;
};

}  // namespace ovix::reduce
