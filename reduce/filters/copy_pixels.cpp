#include "reduce/filters/copy_pixels.h"

#include <cstring>

#include "core/bytes.h"

namespace ovix::reduce {

namespace {

template <bool kSwapped, bool kReversed>
void Copy(u8* __restrict dest, const u8* __restrict source, u64 count) {
    for (u64 i = 0; i < count; ++i) {
        u16 pixel;
        std::memcpy(&pixel, source + 2 * (kReversed ? count - 1 - i : i), 2);
        if constexpr (kSwapped) pixel = static_cast<u16>(pixel << 8 | pixel >> 8);
        std::memcpy(dest + 2 * i, &pixel, 2);
    }
}

}  // namespace

void CopyPixels(void* dest, const void* source, u64 count, SPixelOrder order) {
    u8* to = static_cast<u8*>(dest);
    const u8* from = static_cast<const u8*>(source);
    if (!order.swapped && !order.reversed) {
        if (count) std::memcpy(to, from, 2 * count);
    } else if (!order.reversed) {
        Copy<true, false>(to, from, count);
    } else if (!order.swapped) {
        Copy<false, true>(to, from, count);
    } else {
        Copy<true, true>(to, from, count);
    }
}

}  // namespace ovix::reduce
