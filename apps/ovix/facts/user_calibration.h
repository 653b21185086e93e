#pragma once

#include <string>

#include "apps/ovix/json.h"
#include "core/core.h"
#include "reduce/reduce.h"

/// User calibrations as JSON files, which `ovix calibrate` writes; docs/formats/user_calibration.md tells the form.
namespace ovix::app {

/// Throws `CFault` that names file and field for a file that cannot be read or tells no calibration.
CRCalFile ReadUserCalibration(const std::string& path);

/// The document of a calibration with backgrounds of one value at most: a file holds none for each pixel.
Json UserCalibrationDocument(const CRCalFile& calibration);

}  // namespace ovix::app
