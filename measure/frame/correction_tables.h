#pragma once

#include "measure/frame/options.h"
#include "measure/sources/frame_format.h"
#include "reduce/reduce.h"

namespace ovix::measure {

/// Puts the correction tables of a stem into the array of a source that holds counts. Throws `CError`
/// (CorrectionUnusable, with the stem as its file) when there are none, or when they would not do for the frames.
void LoadCorrectionTables(reduce::CReduceObjectArray& objects, const SCorrectionFiles& files,
                          const SFrameFormat& format);

/// Makes the user calibration of the options, if there is one, that of the source. Throws `CError` (NoCalibration).
void PutUserCalibration(reduce::CReduceObjectArray& objects, const SMeasureOptions& options);

/// Whether the array holds a correction. Throws `CError` (CorrectionUnusable) when its tables are of another size than
/// the frames: nobody looks at that again.
bool HasCorrection(reduce::CReduceObjectArray& objects, const SFrameFormat& format);

}  // namespace ovix::measure
