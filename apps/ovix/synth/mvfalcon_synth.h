#pragma once

#include "apps/ovix/synth/synth.h"

namespace ovix::app {

/// The Falcon family: "header-line" frames. Counts as `CPlainResponse` tells them.
SSynthFamily MVFalconSynthFamily();

}  // namespace ovix::app
