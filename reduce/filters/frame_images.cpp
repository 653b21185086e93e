#include "reduce/filters/frame_images.h"

#include <cstring>

namespace ovix::reduce {

namespace {

/// `change` makes the pixel of one in the frame. The loop is plain, so that it becomes vectors.
template <bool kReversed, class Change>
void ForPixels(u8* __restrict dest, const u8* __restrict source, u64 count, Change change) {
    for (u64 i = 0; i < count; ++i) {
        u16 pixel;
        std::memcpy(&pixel, source + 2 * (kReversed ? count - 1 - i : i), 2);
        pixel = change(pixel);
        std::memcpy(dest + 2 * i, &pixel, 2);
    }
}

u16 Same(u16 pixel) { return pixel; }
u16 Swapped(u16 pixel) { return static_cast<u16>(pixel << 8 | pixel >> 8); }

}  // namespace

void CopyPixels(void* dest, const void* source, u64 count, SPixelOrder order) {
    u8* to = static_cast<u8*>(dest);
    const u8* from = static_cast<const u8*>(source);
    if (!order.swapped && !order.reversed) {
        if (count) std::memcpy(to, from, 2 * count);
    } else if (!order.reversed) {
        ForPixels<false>(to, from, count, Swapped);
    } else if (!order.swapped) {
        ForPixels<true>(to, from, count, Same);
    } else {
        ForPixels<true>(to, from, count, Swapped);
    }
}

void CopyMaskedPixels(void* dest, const void* source, u64 count, u16 mask) {
    ForPixels<false>(static_cast<u8*>(dest), static_cast<const u8*>(source), count,
                     [=](u16 pixel) { return static_cast<u16>(pixel & mask); });
}

void YuvToRGB(u8* rgb, const u8* yuv, u64 pixels, SYuvOrder order) {
    for (u64 pair = 0; pair < pixels / 2; ++pair, yuv += 4, rgb += 6) {
        YuvPixelToRGB(rgb, yuv[order.y0], yuv[order.u], yuv[order.v]);
        YuvPixelToRGB(rgb + 3, yuv[order.y1], yuv[order.u], yuv[order.v]);
    }
}

void BGRToRGB(u8* rgb, const u8* bgr, u16 width, u16 height) {
    for (u32 y = 0; y < height; ++y) {
        const u8* line = bgr + u64{3} * width * (height - 1 - y);
        for (u32 x = 0; x < width; ++x, line += 3, rgb += 3) {
            rgb[0] = line[2];
            rgb[1] = line[1];
            rgb[2] = line[0];
        }
    }
}

bool SPacket::Store(u16 index, void* dest, u64 destSize) const {
    const u64 tail = TailSize();
    if (index >= images || ImagesSize() > size || imageSize + tail > destSize) return false;
    u8* to = static_cast<u8*>(dest);
    if (imageSize) std::memcpy(to, bytes + index * imageSize, imageSize);
    if (tail) std::memcpy(to + imageSize, bytes + ImagesSize(), tail);
    return true;
}

}  // namespace ovix::reduce
