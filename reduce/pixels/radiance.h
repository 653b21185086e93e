#pragma once

#include "core/typed_data.h"
#include "reduce/api.h"

/// Radiance of single values and tables. The functions over images are in to_radiance.h and counts_to_radiance.h.
///
/// An order code says how a count c becomes a radiance under the coefficients a, the background b and the scale s:
///
/// | order   | radiance                                              |
/// |---------|-------------------------------------------------------|
/// | 0       | c * s, no coefficient is read                         |
/// | 1 to 4  | (a[0] + a[1] * c + ... up to the power of the order) * s |
/// | above 4 | the same sum by `pow`                                 |
/// | -1      | (c - b) * a[1] * s + a[0]: a[0] is outside the scale  |
/// | -2      | ((c - b) * a[1] + a[0]) * s                           |
/// | below   | no order: nothing is written                          |
///
/// Nothing tests for division by zero, NaN or infinity: they flow through.
namespace ovix::reduce {

/// The radiance of a black body at `temperatureC` degrees Celsius in the band from `lowWave` to `highWave` micrometres,
/// times `scale`: Planck's law summed by the trapezoid rule in steps of 0.01 micrometres, to which the band is snapped
/// downward. Watts per square centimetre and steradian. 0 for an empty band.
OVIX_REDUCE_API double Radiance(double temperatureC, double lowWave, double highWave, double scale);

/// The order code for one count, powers in double. 0 for a number that is no order.
OVIX_REDUCE_API double ToRadiance(double counts, const double* coefficients, int order, double background,
                                  double scale);

/// Fills a table for the counts first to last, inclusive: out[i] is the radiance of count first + i. Powers of a count
/// wrap as in `ToRadiance` of whole buffers (see to_radiance.h).
///
/// `status`, if given, is cleared first. With `check` each radiance, rounded to float, is held against the limits as in
/// `ToRadiance` with limits. True; `last` before `first` fills nothing.
OVIX_REDUCE_API bool CountsToRadiance(u16 first, u16 last, float* out, u8* status, bool check, double warnLow,
                                      double warnHigh, double clipLow, double clipHigh, const double* coefficients,
                                      int order, double background, double scale);

/// The inverse of a table of radiance against temperature: `temperatures` ascend, in degrees Celsius, `radiances` stand
/// beside them. Between two entries the result is linear. A temperature outside the table takes the radiance of the
/// nearer end and the answer is `clampResult`; inside it is true. The radiance is multiplied by `scale` in both cases.
/// NaN gives NaN. False, with nothing touched, for fewer than two entries.
OVIX_REDUCE_API bool ToRadianceLookup(double& radiance, double temperature, const double* radiances,
                                      const double* temperatures, i32 count, bool clampResult, double scale,
                                      ETempType type);

}  // namespace ovix::reduce
