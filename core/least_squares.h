#pragma once

#include "core/array.h"
#include "core/types.h"

namespace ovix {

/// Polynomial least squares: the `degree + 1` coefficients in ascending order that bring the polynomial of `x` closest
/// to `y`.
///
/// False, with the coefficients as they were, when the arrays differ in length or hold numbers that are not finite,
/// when there are fewer different points than coefficients, and when the points do not determine them in double
/// precision.
OVIX_API bool LinearLeastSquareFit(TArray<double>& x, TArray<double>& y, int degree, TArray<double>& coefficients);

}  // namespace ovix
