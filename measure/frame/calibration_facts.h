#pragma once

#include "measure/frame/measurement.h"
#include "reduce/reduce.h"

namespace ovix::measure {

/// A calibration as a reader would write it down. A list, as of coefficients, is several values of one key.
struct SCalibrationFacts {
    std::string model = {};          ///< "Curlew (factory)"; empty where there is none
    std::string temperatureBy = {};  ///< of a user calibration: "table", "polynomial", "Planck's law"
    EOrigin origin = EOrigin::File;
    std::vector<SParameter> values = {};
};

/// The factory calibration by which counts of the preset are converted.
OVIX_MEASURE_API SCalibrationFacts FactoryCalibration(reduce::CReduceObjectArray& objects, u8 preset);

/// The same of the user's calibration.
OVIX_MEASURE_API SCalibrationFacts UserCalibration(reduce::CReduceObjectArray& objects, u8 preset);

}  // namespace ovix::measure
