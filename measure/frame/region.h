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

/// The figures of one region of one frame, in the frame's unit.
struct SRegionStats {
    reduce::CStats figures = {};  ///< of the pixels whose status lets them count
    double mean = 0, minimum = 0, maximum = 0, standardDeviation = 0;
    u32 count = 0;                    ///< pixels that count
    u32 pixels = 0;                   ///< of the region
    u32 good = 0;                     ///< pixels with no flag at all
    std::array<u32, 8> flagged = {};  ///< pixels that bear status bit i
};

}  // namespace ovix::measure
