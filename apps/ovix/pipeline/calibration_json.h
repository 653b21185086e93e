#pragma once

#include "apps/ovix/json.h"
#include "reduce/reduce.h"

namespace ovix::app {

/// The factory calibration by which counts of the preset are converted, each value with its unit in its key; nothing
/// where there is none.
Json FactoryCalibrationJson(reduce::CReduceObjectArray& objects, u8 preset);

/// The same of the user's calibration.
Json UserCalibrationJson(reduce::CReduceObjectArray& objects, u8 preset);

}  // namespace ovix::app
