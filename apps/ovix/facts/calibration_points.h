#pragma once

#include <optional>
#include <string>
#include <vector>

#include "measure/measure.h"

namespace ovix::app {

/// The lines of a CSV file: counts, temperature, and if need be the preset, which is `preset` where none stands.
///
///     counts,temperature (°C)
///     5012.5,20
///     6230,68F
///
/// A temperature bears its scale (C, F, K, R), or has that of the head line, or `scale`. Empty lines and those that
/// begin with # are passed over. Throws `CFault` that names the line.
std::vector<measure::SCalibrationPoint> ReadCalibrationPoints(const std::string& path, std::optional<ETempType> scale,
                                                              u8 preset);

}  // namespace ovix::app
