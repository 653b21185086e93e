#pragma once

#include <array>
#include <string>

#include "measure/api.h"
#include "reduce/reduce.h"

namespace ovix::measure {

/// A named rectangle of pixels; one of no width stands for the whole frame.
struct SRegion {
    std::string name = {};
    u16 x = 0;
    u16 y = 0;
    u16 width = 0;
    u16 height = 0;
};

/// The figures of one region of one frame, in the frame's unit, of the pixels whose status lets them count; `mean` and
/// the extremes say nothing where `count` is 0.
struct SRegionStats : reduce::CStats {
    u32 pixels = 0;                   ///< of the region
    u32 good = 0;                     ///< pixels with no flag at all
    std::array<u32, 8> flagged = {};  ///< pixels that bear status bit i
};

}  // namespace ovix::measure
