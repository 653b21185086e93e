#pragma once

#include "apps/ovix/synth/synth.h"

namespace ovix::app {

// The two older relatives of the K410. Their infrared types come as "big-endian", as the cameras send their record, and
// "little-endian", their video types as "video".
SSynthFamily MV310SynthFamily();
SSynthFamily PloverSynthFamily();

}  // namespace ovix::app
