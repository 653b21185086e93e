#pragma once

#include <span>
#include <string>
#include <vector>

#include "apps/ovix/output/picture_range.h"
#include "core/core.h"

namespace ovix::app {

/// Pixels as a page holds them: in rows from the top, a status byte beside each.
struct SPagePixels {
    u32 width = 0;
    u32 height = 0;
    std::vector<float> values;
    std::vector<u8> status;
};

/// A frame with `bin` times `bin` pixels made one; those at the right and lower edge are made of what is left there. A
/// value is the mean of the pixels without a flag, of all that are numbers where each has one, else NaN. A status is
/// all flags of its pixels together, so that binning hides none.
SPagePixels BinPixels(std::span<const float> values, std::span<const u8> status, u16 width, u16 height, u32 bin);

/// What was lost and found when frames were packed.
struct SPackFigures {
    double largestRounding = 0;  ///< between a value and what the page has for it
    u64 gaps = 0;                ///< pixels that are no number
    CCommonRange range;          ///< that suits the frames

    void Add(const SPackFigures& other);
};

struct SPackedFrame {
    std::string text;  ///< base64 of a zlib stream, see docs/formats/report_page.md
    SPackFigures figures;
};

/// Rounds each value to a whole number of steps and packs the frame by itself. Throws `CAppError` where a value is more
/// steps than a 32-bit number holds. `step` is above 0.
SPackedFrame PackFrame(const SPagePixels& pixels, double step);

}  // namespace ovix::app
