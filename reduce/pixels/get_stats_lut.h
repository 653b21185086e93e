#pragma once

#include "reduce/api.h"
#include "reduce/pixels/stats.h"

/// Statistics of the image that `ApplyLUT` would write, without writing it: each pixel of raw counts is taken through a
/// table of values and a table of status bytes, and goes to a `CStatsCalculator`.
///
/// Tables and limits are those of `ApplyLUT` (see apply_lut.h). A null `statusLut` stands for clean pixels. In the
/// per-preset forms `sourceStatus` holds each frame pixel's preset, and the arrays have one table for each preset that
/// occurs; null means preset 0 for all pixels.
///
/// As told in stats_calculator.h, index fields hold 0 (or ~0 where nothing was noted), and the all-extremes and the
/// bounding box go on from what `stats` held: pass a new object for figures of this selection alone.
///
/// All are false, with nothing touched, for a type that is not numeric, and true otherwise.
namespace ovix::reduce {

/// A whole frame.
OVIX_REDUCE_API bool GetStatsLUT(STypedData data, CStats& stats, u16 width, u16 height, const float* lut,
                                 const u8* statusLut, u16 lower, u16 upper);
OVIX_REDUCE_API bool GetStatsLUT(STypedData data, const u8* sourceStatus, CStats& stats, u16 width, u16 height,
                                 const float* const* luts, const u8* const* statusLuts, u16 lower, u16 upper);

/// The pixels at `count` frame indices.
OVIX_REDUCE_API bool GetStatsLUT(STypedData data, CStats& stats, u16 width, u16 height, const u32* indices, u32 count,
                                 const float* lut, const u8* statusLut, u16 lower, u16 upper);
OVIX_REDUCE_API bool GetStatsLUT(STypedData data, const u8* sourceStatus, CStats& stats, u16 width, u16 height,
                                 const u32* indices, u32 count, const float* const* luts, const u8* const* statusLuts,
                                 u16 lower, u16 upper);

/// The pixels of an area.
OVIX_REDUCE_API bool GetStatsLUT(STypedData data, CStats& stats, u16 width, u16 height, SArea area, const float* lut,
                                 const u8* statusLut, u16 lower, u16 upper);
OVIX_REDUCE_API bool GetStatsLUT(STypedData data, const u8* sourceStatus, CStats& stats, u16 width, u16 height,
                                 SArea area, const float* const* luts, const u8* const* statusLuts, u16 lower,
                                 u16 upper);

/// Horizontal runs in array order.
OVIX_REDUCE_API bool GetStatsLUT(STypedData data, CStats& stats, u16 width, u16 height, const TArray<SScanLine>& lines,
                                 const float* lut, const u8* statusLut, u16 lower, u16 upper);
OVIX_REDUCE_API bool GetStatsLUT(STypedData data, const u8* sourceStatus, CStats& stats, u16 width, u16 height,
                                 const TArray<SScanLine>& lines, const float* const* luts, const u8* const* statusLuts,
                                 u16 lower, u16 upper);

/// The pixels of an area whose mask[row * maskStride + column] is not 0, in frame coordinates from the top.
OVIX_REDUCE_API bool GetStatsLUT(STypedData data, CStats& stats, u16 width, u16 height, SArea area, const u8* mask,
                                 u32 maskStride, const float* lut, const u8* statusLut, u16 lower, u16 upper);
OVIX_REDUCE_API bool GetStatsLUT(STypedData data, const u8* sourceStatus, CStats& stats, u16 width, u16 height,
                                 SArea area, const u8* mask, u32 maskStride, const float* const* luts,
                                 const u8* const* statusLuts, u16 lower, u16 upper);

}  // namespace ovix::reduce
