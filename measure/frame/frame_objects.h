#pragma once

#include <array>
#include <vector>

#include "measure/frame/options.h"
#include "measure/sources/frame_format.h"
#include "reduce/reduce.h"

/// The array of a source and those of its frames.
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

/// Replaces the target's content by copies on which a frame may leave its mark. What no frame brings and weighs much,
/// correction tables and a user calibration, is shared and not to be changed.
void CopyObjects(const reduce::CReduceObjectArray& from, reduce::CReduceObjectArray& to);

using Presets = std::array<bool, reduce::CConvertContext::PresetCount>;

/// The presets, and the bytes of all objects on which a conversion may depend and which differ from frame to frame: two
/// arrays that `CopyObjects` made of one and that have the same bytes convert alike. False when an object of a plug-in
/// does not say what it holds.
bool DescribeCalibration(const reduce::CReduceObjectArray& objects, const Presets& presets, std::vector<u8>& bytes);

}  // namespace ovix::measure
