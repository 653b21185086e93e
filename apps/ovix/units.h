#pragma once

#include <span>
#include <string>

#include "measure/measure.h"

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

struct SQuantityWord {
    const char* word;
    measure::EQuantity quantity;
};

/// The words of `--unit`.
std::span<const SQuantityWord> QuantityWords();

/// "2026-11-21T08:15:00.250000Z".
inline std::string TimeText(measure::Time time) { return measure::TimeText(time); }

}  // namespace ovix::app
