#pragma once

#include <span>
#include <string>

#include "apps/ovix/pipeline/measure_options.h"
#include "core/core.h"

namespace ovix::app {

struct SQuantityWord {
    const char* word;
    EQuantity quantity;
};

/// The words of `--unit`.
std::span<const SQuantityWord> QuantityWords();

/// "temperature (factory)": the word of `--unit` for a unit, and that of `--cal` where it takes one.
std::string UnitWords(EUnit unit);

/// The unit of those on offer that gives the quantity, by that calibration or by the factory's before the user's.
std::optional<EUnit> FindUnit(const TArray<EUnit>& offered, EQuantity quantity,
                              std::optional<ECalibration> calibration);

/// The unit of those on offer that the options ask for. Throws `CFault` that lists those on offer when there is none.
EUnit ChooseUnit(const TArray<EUnit>& offered, const SMeasureOptions& options);

}  // namespace ovix::app
