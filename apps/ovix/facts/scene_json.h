#pragma once

#include "apps/ovix/json.h"
#include "measure/measure.h"

namespace ovix::app {

/// The double whose shortest text is that of the float: 0.95 for 0.95f, not 0.949999988079071.
double ShortestDouble(float value);

/// The scene's values, each with its unit in its key.
Json SceneJson(const reduce::CObjectParametersReduceObject& scene);

/// "file", "default", "command line", "computed", "frame".
const char* OriginWord(measure::EOrigin origin);

/// All that the values of a frame rest on: its source, the unit, corrections, where they come from, the scene with who
/// said each value, and the constants of the calibration.
Json ParametersJson(const measure::CMeasurement& measurement, const measure::CFrame& frame);

}  // namespace ovix::app
