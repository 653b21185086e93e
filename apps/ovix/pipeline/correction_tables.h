#pragma once

#include "apps/ovix/input/frame_format.h"
#include "apps/ovix/pipeline/measure_options.h"
#include "reduce/reduce.h"

namespace ovix::app {

/// Puts the correction tables of a stem into the array. Throws `CFault` when there are none, or when they would not do
/// for the frames.
void LoadCorrectionTables(reduce::CReduceObjectArray& objects, const SCorrectionFiles& files,
                          const SFrameFormat& format);

/// Whether the array holds a correction. Throws `CFault` when its tables are of another size than the frames: nobody
/// looks at that again.
bool HasCorrection(reduce::CReduceObjectArray& objects, const SFrameFormat& format);

}  // namespace ovix::app
