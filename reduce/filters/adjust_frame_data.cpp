#include "reduce/filters/adjust_frame_data.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "core/bytes.h"
#include "core/pixel_types.h"
#include "reduce/filters/frame_images.h"

namespace ovix::reduce {

namespace {

struct STurn {
    bool mirror;
    bool flip;
};

/// The place of the source word for column x and line y, which include the margins. Quirk: only untouched pictures have
/// source lines with margins.
i64 SourceWord(i64 x, i64 y, i64 width, i64 height, i64 wholeLine, STurn turn) {
    if (turn.flip) return turn.mirror ? (height - y) * width - x - 1 : (height - y - 1) * width + x;
    return turn.mirror ? (y + 1) * width - x - 1 : y * wholeLine + x;
}

void AdjustCounts(u8* dest, const u8* source, i32 width, i32 height, const RECT& rect, i32 shift, i32 mask,
                  STurn turn) {
    const u32 bits = shift < 0 ? 0u - static_cast<u32>(shift) : static_cast<u32>(shift);  // to the left in both cases
    const u32 kept = bits < 16 ? static_cast<u32>(mask) & 0xFFFF : 0;                     // nothing is left beyond
    const i64 wholeLine = i64{rect.left} + width + rect.right;
    const i64 step = turn.mirror ? -1 : 1;
    for (i64 y = 0; y < height; ++y) {
        const u8* word = source + 2 * SourceWord(rect.left, rect.top + y, width, height, wholeLine, turn);
        for (i64 x = 0; x < width; ++x, dest += 2) {
            const u32 count = LoadLittle<u16>(word + 2 * step * x);
            StoreLittle(dest, static_cast<u16>(count << (bits & 15) & kept));
        }
    }
}

struct SPixel {
    u8 red, green, blue;
};
static_assert(sizeof(SPixel) == 3 && alignof(SPixel) == 1);

/// Brings the lines to their places, then turns the picture where it stands.
void AdjustPixels(void* dest, const void* source, i32 width, i32 height, bool fields, STurn turn) {
    const u64 count = static_cast<u64>(width) * static_cast<u64>(height);
    if (fields) {
        deinterlace(dest, source, width, height, sizeof(SPixel), -1, -1);
    } else {
        std::memcpy(dest, source, count * sizeof(SPixel));
    }
    SPixel* pixels = static_cast<SPixel*>(dest);
    if (turn.mirror && turn.flip) {
        std::reverse(pixels, pixels + count);
        return;
    }
    for (i64 y = 0; turn.mirror && y < height; ++y) std::reverse(pixels + y * width, pixels + (y + 1) * width);
    for (i64 y = 0; turn.flip && y < height / 2; ++y) {
        std::swap_ranges(pixels + y * width, pixels + (y + 1) * width, pixels + (height - 1 - y) * width);
    }
}

/// A run from its end backwards: the first pair of the source becomes the last two pixels.
void YuvToMirroredRGB(u8* rgb, const u8* yuv, i64 pixels) {
    u8* pixel = rgb + 3 * pixels;
    for (i64 pair = 0; pair < pixels / 2; ++pair, yuv += 4) {
        YuvPixelToRGB(pixel -= 3, yuv[kYUY2Order.y0], yuv[kYUY2Order.u], yuv[kYUY2Order.v]);
        YuvPixelToRGB(pixel -= 3, yuv[kYUY2Order.y1], yuv[kYUY2Order.u], yuv[kYUY2Order.v]);
    }
}

/// Source lines come in order; where they go follows from the flags.
class CYuvLines {
  public:
    CYuvLines(void* dest, const void* source, i32 width, bool mirror)
        : dest_(static_cast<u8*>(dest)), source_(static_cast<const u8*>(source)), width_(width), mirror_(mirror) {}

    /// The next lines of the source go to line `first` of the result and every `step`-th from there, within the
    /// picture.
    void Next(i64 first, i64 step, i64 height) {
        for (i64 line = first; line >= 0 && line < height; line += step, source_ += 2 * width_) {
            u8* rgb = dest_ + 3 * width_ * line;
            if (mirror_) {
                YuvToMirroredRGB(rgb, source_, width_);
            } else {
                YuvToRGB(rgb, source_, static_cast<u64>(width_), kYUY2Order);
            }
        }
    }

  private:
    u8* dest_;
    const u8* source_;
    i64 width_;
    bool mirror_;
};

void AdjustYuv(void* dest, const void* source, i32 width, i32 height, bool fields, STurn turn) {
    CYuvLines lines(dest, source, width, turn.mirror);
    if (fields && turn.flip) {
        lines.Next(height - 2, -2, height);
        lines.Next(height - 1, -2, height);
    } else if (fields) {
        lines.Next(0, 2, height);
        lines.Next(1, 2, height);
    } else if (turn.flip) {
        lines.Next(height - 1, -1, height);
    } else if (turn.mirror) {
        lines.Next(0, 1, height);
    } else {
        const u64 pixels = static_cast<u64>(width) * static_cast<u64>(height);
        YuvToRGB(static_cast<u8*>(dest), static_cast<const u8*>(source), pixels, kYUY2Order);
    }
}

}  // namespace

SAdjustedWords AdjustedWords(i32 width, i32 height, RECT rect, bool mirror, bool flip) {
    if (width < 1 || height < 1) return {};
    // The places grow or fall evenly with column and line: the corners are the ends.
    i64 first = std::numeric_limits<i64>::max(), last = std::numeric_limits<i64>::min();
    for (const i64 x : {i64{rect.left}, i64{rect.left} + width - 1}) {
        for (const i64 y : {i64{rect.top}, i64{rect.top} + height - 1}) {
            const i64 word = SourceWord(x, y, width, height, i64{rect.left} + width + rect.right, {mirror, flip});
            first = std::min(first, word);
            last = std::max(last, word);
        }
    }
    return {first, last + 1};
}

void AdjustFrameData(void* dest, const void* source, i32 width, i32 height, GUID pixelType, RECT rect, i32 shift,
                     i32 mask, bool deinterlace, bool mirror, bool flip) {
    if (width < 1 || height < 1) return;
    const STurn turn{mirror, flip};
    if (IsPixelBaseType(pixelType, rootIRType)) {
        AdjustCounts(static_cast<u8*>(dest), static_cast<const u8*>(source), width, height, rect, shift, mask, turn);
    } else if (IsPixelBaseType(pixelType, rootRGB24Type)) {
        AdjustPixels(dest, source, width, height, deinterlace, turn);
    } else if (IsPixelBaseType(pixelType, rootYUVType)) {
        AdjustYuv(dest, source, width, height, deinterlace, turn);
    }
}

}  // namespace ovix::reduce
