#pragma once

#include <array>
#include <vector>

#include "reduce/reduce.h"

namespace ovix::measure {

/// Replaces the target's content by copies on which a frame may leave its mark. What no frame brings and weighs much,
/// correction tables and a user calibration, is shared and not to be changed.
void CopyObjects(const reduce::CReduceObjectArray& from, reduce::CReduceObjectArray& to);

using Presets = std::array<bool, reduce::CConvertContext::PresetCount>;

/// The presets, and the bytes of all objects on which a conversion may depend and which differ from frame to frame: two
/// arrays that `CopyObjects` made of one and that have the same bytes convert alike. False when an object of a plug-in
/// does not say what it holds.
bool DescribeCalibration(const reduce::CReduceObjectArray& objects, const Presets& presets, std::vector<u8>& bytes);

}  // namespace ovix::measure
