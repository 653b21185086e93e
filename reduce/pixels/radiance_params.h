#pragma once

#include "core/typed_data.h"

namespace ovix::reduce {

/// How the counts of one preset become radiance. The arrays belong to the caller.
struct SRadianceParams {
    const double* coefficients = nullptr;  ///< a[0] first
    i32 order = 0;                         ///< the order code, see radiance.h
    double background = 0;                 ///< for the orders -1 and -2
    const double* backgrounds = nullptr;   ///< one for each frame pixel; replaces `background` if given
};

/// What all presets of a call share.
struct SCommonParams {
    double radianceScale = 1;      ///< factor on the radiance
    double signalScale = 1;        ///< divisor of a radiance before it becomes a temperature
    ETempType tempType = Celsius;  ///< wanted temperature scale
    double highWave = 0;           ///< upper band limit of the Planck model, micrometres
    double lowWave = 0;            ///< lower band limit of the Planck model, micrometres
};

}  // namespace ovix::reduce
