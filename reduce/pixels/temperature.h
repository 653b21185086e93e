#pragma once

#include "core/typed_data.h"
#include "reduce/api.h"

/// Temperature of a single radiance, by four models. The functions over images are in to_temperature.h,
/// radiance_to_temperature.h and counts_to_temperature.h.
///
/// A radiance is divided by `scale`, the emissivity, before it enters a model. Polynomial and table yield degrees
/// Celsius, the other two kelvin; the final step then leads to the scale that `type` names. A `type` that names none
/// means Celsius.
///
/// Nothing tests for division by zero, NaN or infinity: they flow through.
namespace ovix::reduce {

/// Not the polynomial of the images, on purpose: the power is squared from term to term, so that the terms are
/// a[1] x, a[2] x^2, a[3] x^4, a[4] x^8 and so on. An order below 1 gives a[0].
OVIX_REDUCE_API double ToTemperatureCoeffs(double radiance, const double* coefficients, i32 order, double scale,
                                           ETempType type);

/// Linear between the entries of a table: `radiances` ascend, `temperatures` stand beside them in degrees Celsius. A
/// radiance outside the table takes the temperature of the nearer end and the answer is `clampResult`; inside it is
/// true. NaN gives NaN. False, with nothing touched, for fewer than two entries.
OVIX_REDUCE_API bool ToTemperatureLookup(double& temperature, double radiance, const double* radiances,
                                         const double* temperatures, i32 tableSize, bool clampResult, double scale,
                                         ETempType type);

/// The inverse of Planck's law at the middle w of a band that is d wide, both in micrometres:
///
///     T = 14388.3 / (w * ln(1 + 11910.66 * d * scale / (w^5 * radiance)))
///
/// The radiance is that of the band, in watts per square centimetre and steradian. A radiance of 0 gives 0 K.
OVIX_REDUCE_API double ToTemperaturePlanck(double radiance, double highWave, double lowWave, double scale,
                                           ETempType type);

/// The three-parameter fit with an offset, x being the scaled radiance:
///
///     T = B / ln(R / (x - O) + F)
///
/// The logarithm is never taken of less than 1.0002, or 1.0002 F where F is above 1. Radiances not above O give 0 K.
/// The four floats are not used.
OVIX_REDUCE_API double ToTemperatureRBF(double radiance, double R, double B, double F, double O, float, float, float,
                                        float, double scale, ETempType type);

}  // namespace ovix::reduce
