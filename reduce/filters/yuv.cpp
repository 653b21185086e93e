#include "reduce/filters/yuv.h"

namespace ovix::reduce {

void YuvToRGB(u8* rgb, const u8* yuv, u64 pixels, SYuvOrder order) {
    for (u64 pair = 0; pair < pixels / 2; ++pair, yuv += 4, rgb += 6) {
        YuvPixelToRGB(rgb, yuv[order.y0], yuv[order.u], yuv[order.v]);
        YuvPixelToRGB(rgb + 3, yuv[order.y1], yuv[order.u], yuv[order.v]);
    }
}

}  // namespace ovix::reduce
