#pragma once

#include "core/typed_data.h"
#include "reduce/api.h"

/// Pixels through a table of single-precision values with one entry for each signal value.
///
/// A pixel is converted to single precision, limited to lower .. upper, rounded half away from zero, and its low 16
/// bits are the place in the table; entry k belongs to pixel value k, whatever `lower` is. NaN takes entry 0. So
/// `lower` to `upper` (and 0 for sources with NaN) must be valid places; the tables need hold no more.
/// The entry is cast to the destination type as `NumericCast` tells.
///
/// `status` is a compact buffer beside the destination; when it is not null, it takes the entry of `statusLut` at the
/// same place. When it is null, `statusLut` is not read and may be null.
///
/// In the per-preset forms `sourceStatus` holds each frame pixel's preset, and `luts` and `statusLuts` have one table
/// for each preset that occurs in it; null means preset 0 for all pixels.
///
/// All ten numeric types are taken on both sides; any other type gives false, with nothing touched. The kernels keep no
/// state, take no memory and run on the caller's thread. Buffers belong to the caller; with `count` pixels from the
/// start, source and destination may be one buffer when their elements have one width.
namespace ovix::reduce {

/// The first `count` pixels.
OVIX_REDUCE_API bool ApplyLUT(STypedData source, STypedData destination, u8* status, u32 count, float* lut,
                              u8* statusLut, u16 lower, u16 upper);
OVIX_REDUCE_API bool ApplyLUT(STypedData source, const u8* sourceStatus, STypedData destination, u8* status, u32 count,
                              float* const* luts, u8* const* statusLuts, u16 lower, u16 upper);

/// The pixels at `count` frame indices.
OVIX_REDUCE_API bool ApplyLUT(STypedData source, STypedData destination, u8* status, const u32* indices, u32 count,
                              float* lut, u8* statusLut, u16 lower, u16 upper);
OVIX_REDUCE_API bool ApplyLUT(STypedData source, const u8* sourceStatus, STypedData destination, u8* status,
                              const u32* indices, u32 count, float* const* luts, u8* const* statusLuts, u16 lower,
                              u16 upper);

/// A rectangle of a frame that is `width` wide. The height is not read.
OVIX_REDUCE_API bool ApplyLUT(STypedData source, STypedData destination, u8* status, u16 width, u16 height, SArea area,
                              float* lut, u8* statusLut, u16 lower, u16 upper);
OVIX_REDUCE_API bool ApplyLUT(STypedData source, const u8* sourceStatus, STypedData destination, u8* status, u16 width,
                              u16 height, SArea area, float* const* luts, u8* const* statusLuts, u16 lower, u16 upper);

/// Horizontal runs in array order.
OVIX_REDUCE_API bool ApplyLUT(STypedData source, STypedData destination, u8* status, u16 width, u16 height,
                              const TArray<SScanLine>& lines, float* lut, u8* statusLut, u16 lower, u16 upper);
OVIX_REDUCE_API bool ApplyLUT(STypedData source, const u8* sourceStatus, STypedData destination, u8* status, u16 width,
                              u16 height, const TArray<SScanLine>& lines, float* const* luts, u8* const* statusLuts,
                              u16 lower, u16 upper);

/// The pixels of a rectangle whose mask[row * maskStride + column] is not 0. The mask covers the frame, not the area.
OVIX_REDUCE_API bool ApplyLUT(STypedData source, STypedData destination, u8* status, u16 width, u16 height, SArea area,
                              const u8* mask, u32 maskStride, float* lut, u8* statusLut, u16 lower, u16 upper);
OVIX_REDUCE_API bool ApplyLUT(STypedData source, const u8* sourceStatus, STypedData destination, u8* status, u16 width,
                              u16 height, SArea area, const u8* mask, u32 maskStride, float* const* luts,
                              u8* const* statusLuts, u16 lower, u16 upper);

}  // namespace ovix::reduce
