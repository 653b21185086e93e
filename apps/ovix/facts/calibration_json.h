#pragma once

#include "apps/ovix/json.h"
#include "measure/measure.h"

namespace ovix::app {

/// A calibration, each value with its unit in its key; nothing for one without a model.
Json CalibrationJson(const measure::SCalibrationFacts& facts);

}  // namespace ovix::app
