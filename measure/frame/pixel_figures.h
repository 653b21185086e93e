#pragma once

#include <array>
#include <vector>

#include "measure/frame/measurement.h"
#include "measure/frame/pixel_set.h"

namespace ovix::measure {

/// Of which pixels figures are made.
enum class EPixels : u8 {
    Counted,  ///< whose status lets them count: flags of range and of missing data do
    Good,     ///< whose status bears no flag at all
};

struct SPixelFigures : SRegionStats {
    std::array<u32, 8> byHighestFlag = {};  ///< pixels whose highest status bit is i: with `good`, each pixel once
};

/// The figures of the chosen pixels of a shape, in the frame's unit; `mean` and the extremes say nothing where `count`
/// is 0. Throws `CError` (WrongArgument) for a shape that was made for frames of another size.
OVIX_MEASURE_API SPixelFigures FiguresOf(const CFrame& frame, const CPixelSet& pixels,
                                         EPixels which = EPixels::Counted);

/// The values of a shape in rows from the top, without those that do not count and those that are no numbers.
OVIX_MEASURE_API std::vector<float> ValuesOf(const CFrame& frame, const CPixelSet& pixels,
                                             EPixels which = EPixels::Counted);

}  // namespace ovix::measure
