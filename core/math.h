#pragma once

#include "core/typed_data.h"

namespace ovix {

struct OVIX_API CMath {
    /// Element-wise change of the temperature scale, computed in double and stored by `NumericCast`. A scale outside
    /// the four leaves the number. False, with nothing touched, when a type is not numeric.
    static bool ConvertTemperature(STypedData dest, STypedData source, u32 count, ETempType from, ETempType to);
};

/// Polynomial least squares: the `degree + 1` coefficients in ascending order that bring the polynomial of `x` closest
/// to `y`. False when there are fewer points than coefficients or they do not determine them.
OVIX_API bool LinearLeastSquareFit(TArray<double>& x, TArray<double>& y, int degree, TArray<double>& coefficients);

/// Puts the lines of an image that came as two fields, one after the other, in their places: the first
/// (height + 1) / 2 source lines go to lines 0, 2, 4 and so on, the rest to 1, 3, 5 and so on. The last two arguments
/// are not used. The buffers must not overlap.
OVIX_API void deinterlace(void* dest, const void* source, int width, int height, int bytesPerPixel, int, int);

}  // namespace ovix
