#pragma once

#include "reduce/api.h"
#include "reduce/pixels/stats.h"

/// The six indices of a result (minimum, maximum, all-minimum, all-maximum, first, last) turned into the six points
/// beside them: the four positions and the corners of the bounding box. For statistics that were made of a compact
/// buffer: the indices are places in the selection named here.
namespace ovix::reduce {

/// The selection is an area, row by row. An area that is 65536 wide is the caller's fault.
OVIX_REDUCE_API void CalcPositions(CStats& stats, SArea area);
/// Horizontal runs in array order. The point of an index that no run covers stays as it was.
OVIX_REDUCE_API void CalcPositions(CStats& stats, const TArray<SScanLine>& lines);
/// A whole frame. A width of 0 is the caller's fault, here and with the list.
OVIX_REDUCE_API void CalcPositions(CStats& stats, u16 width, u16 height);
/// A list of frame indices; an index beyond the list stands for pixel 0.
OVIX_REDUCE_API void CalcPositions(CStats& stats, u16 width, u16 height, const u32* indices, u32 count);
/// The pixels of an area whose mask[row * maskStride + column] is not 0. The point of an index beyond them stays.
OVIX_REDUCE_API void CalcPositions(CStats& stats, SArea area, const u8* mask, u32 maskStride);

}  // namespace ovix::reduce
