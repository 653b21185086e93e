#pragma once

#include "measure/frame/options.h"
#include "measure/sources/frame_format.h"
#include "reduce/reduce.h"

namespace ovix::measure {

/// Puts what the caller adds to a source into its array: scene values, correction tables, a user calibration; the rest
/// of the options is not looked at. What is recorded with the array then says it for all frames. Throws `CError`
/// (CorrectionUnusable, NoCalibration).
OVIX_MEASURE_API void AddToSource(reduce::CReduceObjectArray& objects, const SMeasureOptions& options,
                                  const SFrameFormat& format);

}  // namespace ovix::measure
