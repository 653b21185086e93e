#pragma once

#include "core/api.h"
#include "core/typed_data.h"

namespace ovix {

struct OVIX_API CMath {
    /// A temperature in another scale, in double: kelvin = Celsius + 273.15, Fahrenheit = Celsius * 1.8 + 32 =
    /// kelvin * 1.8 - 459.67, Rankine = kelvin * 1.8, and the reverse. A scale outside the four leaves the number.
    static double ConvertTemperature(double temperature, ETempType from, ETempType to);

    /// The same for each element of a buffer: widened to double, converted, stored by `NumericCast`. Where the scales
    /// ask for no change, the elements move as in `ConvertArray`. False, with nothing touched, when a type is not
    /// numeric. The buffers may be one when their elements have one width, and must not overlap otherwise.
    static bool ConvertTemperature(STypedData dest, STypedData source, u32 count, ETempType from, ETempType to);
};

}  // namespace ovix
