#pragma once

#include <string>

#include "core/core.h"

namespace ovix::app {

/// How a unit is shown. Texts are UTF-8.
struct SUnitText {
    std::string quantity;    ///< "Temperature", "Radiance", "Object signal", "Counts"
    std::string symbol;      ///< "°C", "W/(cm² sr)"; "counts" where the unit has no symbol
    std::string difference;  ///< the symbol of a difference or a deviation: "K" for degrees Celsius

    /// "Temperature (°C)"; "Counts" alone where both words are one.
    std::string Label() const;
};

/// The texts of a unit; the scale is looked at for temperatures only.
SUnitText UnitText(EUnit unit, ETempType scale);

}  // namespace ovix::app
