#pragma once

#include <string>

#include "apps/ovix/json.h"

namespace ovix::app {

/// A value of a document for a reader: texts as they are, lists in one line, nothing as "none".
std::string ShownJson(const Json& value);

/// A table of values under a title, each named by its key: "reflectedTemperatureKelvin" is "reflected temperature" in
/// K. Empty for no values.
std::string ValueSection(const char* title, const Json& values);

}  // namespace ovix::app
