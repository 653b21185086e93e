#pragma once

#include <string>

#include "core/core.h"

namespace ovix::app {

/// A value of a unit for a reader: as many digits as mean something. "-" for no number.
std::string ShownValue(double value, EUnit unit);

/// The shortest text that reads back to the same number; empty for no number.
std::string ExactNumber(double value);

/// A field of a CSV line, in quotes where it needs them.
std::string CsvField(const std::string& text);

}  // namespace ovix::app
