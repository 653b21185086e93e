#pragma once

#include "core/types.h"

/// The version of the headers that a program is compiled with.
#define OVIX_VERSION_MAJOR 1
#define OVIX_VERSION_MINOR 0
#define OVIX_VERSION_PATCH 0
#define OVIX_VERSION_STRING "1.0.0"

namespace ovix {

/// The version of the library that a program runs with: "1.0.0".
OVIX_API const char* Version();

}  // namespace ovix
