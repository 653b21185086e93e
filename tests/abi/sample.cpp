// Types of the public headers, as something that leaves a library.

#include "measure/finding.h"
#include "measure/frame/region.h"
#include "reduce/reduce.h"

__attribute__((visibility("default"))) void Show(ovix::measure::SFinding&) {}
__attribute__((visibility("default"))) void Show(ovix::measure::SRegionStats&) {}
__attribute__((visibility("default"))) void Show(ovix::reduce::IReduceObject&) {}
