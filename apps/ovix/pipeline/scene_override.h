#pragma once

#include "apps/ovix/pipeline/measure_options.h"
#include "reduce/reduce.h"

namespace ovix::app {

/// Replaces values of the array's scene by those that are given.
void OverrideScene(reduce::CReduceObjectArray& objects, const SSceneValues& values);

}  // namespace ovix::app
