#pragma once

#include <fmt/format.h>

#include "apps/ovix/fault.h"

namespace ovix::app {

/// The demo makes its frames itself: what the library refuses there is a fault of the program, and says at which step.
inline void Require(bool done, const char* step) {
    if (!done) throw CFault({.problem = fmt::format("the library refuses {} for a frame that it should take", step)});
}

}  // namespace ovix::app
