#pragma once

#include "core/types.h"

namespace ovix::reduce {

/// How the radiance of one preset becomes temperature: by the table if it has two entries or more, else by the
/// polynomial if its order is 1 or more, else by Planck's law over the band of `SCommonParams`. The arrays belong to
/// the caller and may be null.
struct STemperatureParams {
    const double* radiances = nullptr;     ///< of the table, ascending
    const double* temperatures = nullptr;  ///< beside them, degrees Celsius
    i32 tableSize = 0;                     ///< entries of each
    const double* coefficients = nullptr;  ///< of the polynomial, a[0] first; radiance to degrees Celsius
    i32 order = 0;                         ///< of the polynomial
};

}  // namespace ovix::reduce
