#pragma once

#include <string>
#include <vector>

#include "apps/ovix/input/frame_source.h"
#include "apps/ovix/json.h"
#include "apps/ovix/pipeline/measure_options.h"
#include "core/core.h"

namespace ovix::app {

/// One pixel's value at a step of its way.
struct SWalkStep {
    std::string name;
    EUnit unit = Counts;
    float value = 0;
    u8 status = 0;
};

/// A value of the scene, and who said it.
struct SSceneParameter {
    const char* name;
    const char* unit;  ///< empty for none
    float value;
    const char* from;  ///< "file", "default", "command line", "computed"
};

/// The way of one pixel from its count to the last unit that the source can give.
struct SPixelWalk {
    u8 preset = 0;
    std::vector<SWalkStep> steps;
    std::vector<SSceneParameter> scene;
    Json calibration;  ///< nothing where there is none
    const char* calibrationFrom = "file";
};

/// Walks pixel `pixel` (counted in rows from the top) of a frame. The quantity of the options ends the way; none means
/// all of it. Throws `CFault` for a frame that would not do, and for a source without counts.
SPixelWalk WalkPixel(IFrameSource& source, const SMeasureOptions& options, u64 frame, u32 pixel);

}  // namespace ovix::app
