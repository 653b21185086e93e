#pragma once

#include "apps/ovix/synth/synth.h"

namespace ovix::app {

/// The Lapwing family: counts and a line for the trailer, which pictures of less than 48 columns have no room for.
SSynthFamily LapwingSynthFamily();

}  // namespace ovix::app
