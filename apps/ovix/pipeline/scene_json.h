#pragma once

#include "apps/ovix/json.h"
#include "reduce/reduce.h"

namespace ovix::app {

/// The double whose shortest text is that of the float: 0.95 for 0.95f, not 0.949999988079071.
double ShortestDouble(float value);

/// The scene's values, each with its unit in its key.
Json SceneJson(const reduce::CObjectParametersReduceObject& scene);

}  // namespace ovix::app
