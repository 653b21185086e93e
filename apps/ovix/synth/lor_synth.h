#pragma once

#include "apps/ovix/synth/synth.h"

namespace ovix::app {

// The two models of the LOR family. "LOR-RA" comes as "header-line", "LOR-SB" as "lens", with the lens block behind the
// header, and "no-lens". Counts as `CPlainResponse` tells them.
SSynthFamily LORRASynthFamily();
SSynthFamily LORSBSynthFamily();

}  // namespace ovix::app
