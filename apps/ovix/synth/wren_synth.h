#pragma once

#include "apps/ovix/synth/synth.h"

namespace ovix::app {

/// The Wren family: counts of 14 bits, with the trailer of newer cameras ("native") or that of older ones ("older").
SSynthFamily WrenSynthFamily();

}  // namespace ovix::app
