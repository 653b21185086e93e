#pragma once

#include <optional>
#include <span>
#include <string>

#include "measure/frame/measurement.h"

namespace ovix::measure {

/// The unit of those on offer that the options ask for. Throws `CError` (UnitNotOffered) that lists those on offer.
EUnit ChooseUnit(std::span<const EUnit> offered, const SMeasureOptions& options);

constexpr bool IsUserUnit(EUnit unit) { return unit == RadianceUser || unit == TemperatureUser; }

}  // namespace ovix::measure
