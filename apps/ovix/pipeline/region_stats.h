#pragma once

#include "apps/ovix/pipeline/measurement.h"
#include "apps/ovix/region.h"
#include "reduce/reduce.h"

namespace ovix::app {

/// The figures of one region of one frame.
struct SRegionStats {
    u64 frame = 0;
    SRegion region;
    reduce::CStats figures = {};  ///< of the pixels whose status lets them count
    Json status = {};             ///< pixels per flag, as `CountStatus` tells them
};

SRegionStats StatsOf(const SMeasuredFrame& frame, const SRegion& region, u16 width, u16 height);

}  // namespace ovix::app
