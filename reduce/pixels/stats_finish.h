#pragma once

#include "reduce/pixels/stats.h"

namespace ovix::reduce {

/// Mean (kept when nothing was counted), variance and deviation of `count` pixels; takes the sum of squares from
/// `variance`.
void FinishMoments(CStats& stats);

/// Sizes and centre of the bounding box that the record holds.
void FinishBounds(CStats& stats);

}  // namespace ovix::reduce
