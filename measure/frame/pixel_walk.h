#pragma once

#include <string>
#include <vector>

#include "measure/frame/calibration_facts.h"
#include "measure/frame/measurement.h"

namespace ovix::measure {

/// One pixel's value at a step of its way.
struct SWalkStep {
    EUnit unit = Counts;
    bool corrected = false;  ///< of counts: after the correction
    float value = 0;
    u8 status = 0;
};

/// The way of one pixel from its count to the last unit that the source can give.
struct SPixelWalk {
    u8 preset = 0;                  ///< whose calibration serves
    std::vector<SWalkStep> steps;   ///< counts as recorded, counts corrected, signal, radiance, temperature
    std::vector<SParameter> scene;  ///< of the last step that depends on one; else of the frame
    SCalibrationFacts calibration;  ///< of the last step
};

/// Walks pixel `pixel` (counted in rows from the top) of a frame. The quantity of the options ends the way; none means
/// all of it. Throws `CError` for a frame that would not do, a pixel outside of it (WrongArgument), and a source
/// without counts (UnitNotOffered).
OVIX_MEASURE_API SPixelWalk WalkPixel(const CSource& source, const SMeasureOptions& options, u64 frame, u32 pixel);
/// The same for bytes that were read already.
OVIX_MEASURE_API SPixelWalk WalkPixel(const CSource& source, const SMeasureOptions& options, const SRawFrame& raw,
                                      u32 pixel);

}  // namespace ovix::measure
