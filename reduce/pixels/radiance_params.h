#pragma once

#include "core/typed_data.h"

namespace ovix::reduce {

/// The limits of a measured quantity. A value strictly between `lower` and `upper` is good; beyond them it keeps its
/// value until the limits cut it.
struct SLimitRule {
    double lower = 0;      ///< of the calibrated range; a value at it is outside
    double upper = 0;      ///< of the calibrated range; a value at it is outside
    double underflow = 0;  ///< values below become this
    double overflow = 0;   ///< values above become this
};

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
