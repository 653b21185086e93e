#pragma once

#include "apps/ovix/synth/synth.h"

namespace ovix::app {

/// The K410 family. Its four uncompressed types come as "digital" (a header ahead of the container), "plain",
/// "digital-swapped" and "plain-swapped" (pixels and record in the other byte order), its compressed type as "jpeg-ls",
/// its video types as "video".
SSynthFamily K410SynthFamily();

}  // namespace ovix::app
