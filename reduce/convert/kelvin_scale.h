#pragma once

#include "core/typed_data.h"

namespace ovix::reduce {

/// How a temperature scale stands to kelvin: value = kelvin * factor - offset. For a scale that is none of the four
/// `known` is false and the numbers are those of kelvin; what that means is each caller's own affair.
struct SKelvinScale {
    double factor = 1.0;
    double offset = 0.0;
    bool known = true;

    double FromKelvin(double kelvin) const { return kelvin * factor - offset; }
    double ToKelvin(double value) const { return (value + offset) / factor; }
};

constexpr SKelvinScale KelvinScale(ETempType type) {
    switch (type) {
        case Celsius:
            return {1.0, 273.15};
        case Fahrenheit:
            return {1.8, 459.67};
        case Kelvin:
            return {};
        case Rankine:
            return {1.8, 0.0};
        default:
            return {1.0, 0.0, false};
    }
}

}  // namespace ovix::reduce
