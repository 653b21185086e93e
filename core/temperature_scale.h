#pragma once

#include "core/typed_data.h"

namespace ovix {

/// How a temperature scale stands to kelvin and to degrees Celsius, in double. For a scale that is none of the four
/// `known` is false, and both directions leave the number; what that means is each caller's own affair.
struct STemperatureScale {
    double factor = 1.0;  ///< value = kelvin * factor - offset
    double offset = 0.0;
    double celsiusShift = 0.0;  ///< value = (celsius + celsiusShift) * factor + celsiusOffset
    double celsiusOffset = 0.0;
    bool known = true;

    constexpr double FromKelvin(double kelvin) const { return kelvin * factor - offset; }
    constexpr double ToKelvin(double value) const { return (value + offset) / factor; }
    constexpr double FromCelsius(double celsius) const { return (celsius + celsiusShift) * factor + celsiusOffset; }
};

constexpr STemperatureScale TemperatureScale(ETempType type) {
    switch (type) {
        case Celsius:
            return {1.0, 273.15, 0.0, 0.0, true};
        case Fahrenheit:
            return {1.8, 459.67, 0.0, 32.0, true};
        case Kelvin:
            return {1.0, 0.0, 273.15, 0.0, true};
        case Rankine:
            return {1.8, 0.0, 273.15, 0.0, true};
        default:
            return {1.0, 0.0, 0.0, 0.0, false};
    }
}

}  // namespace ovix
