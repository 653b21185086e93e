#pragma once

#include "reduce/api.h"
#include "reduce/pixels/stats.h"

/// Statistics of pixels in the unit of their buffer.
///
/// Values are taken in double, compared strictly and summed in walking order: the results do not depend on the machine.
/// A NaN never becomes an extreme unless it is the very first pixel, and makes the sum NaN. The kernels keep no state,
/// take no memory and run on the caller's thread; buffers belong to the caller. A null `status` means that every pixel
/// is valid. Nothing selected leaves extremes, positions, bounding box and mean as they were.
///
/// What the two groups write besides what is common:
///
/// |                          | void, frame             | void, list              | boolean          |
/// |--------------------------|-------------------------|-------------------------|------------------|
/// | index                    | frame index             | place in the list       | frame index      |
/// | bounding box             | frame, or masked pixels | selected pixels         | selected pixels  |
/// | allMinimum, allMaximum   | always                  | always                  | only with status |
/// | centerValue, -Status     | yes                     | no                      | no               |
/// | nothing selected         | all-indices stay        | all-indices stay        | they become ~0   |
namespace ovix::reduce {

/// A frame. Where `mask` is given, a pixel is selected when mask[(height - 1 - y) * maskStride + x] is not 0: the mask
/// stands bottom-up beside the frame, unlike the masks of all other functions. A source of `UInt64`, or of no numeric
/// type, does nothing.
OVIX_REDUCE_API void GetStats(CStats& stats, STypedData data, int width, int height, u8* mask, u32 maskStride,
                              u8* status);
/// A compact buffer with one element for each entry of a list of frame indices. The status is frame-sized and read
/// through the list. Types as above.
OVIX_REDUCE_API void GetStats(CStats& stats, STypedData data, u32* indices, u32 count, int width, int height,
                              u8* status);
/// A buffer of `count` pixels, taken as a frame of one row. Types as above.
OVIX_REDUCE_API void GetStats(CStats& stats, STypedData data, u8* status, u32 count);

/// A frame. False, with nothing touched, for a type that is not numeric, also when either size is 0.
OVIX_REDUCE_API bool GetStats(CStats& stats, STypedData data, const u8* status, u16 width, u16 height);
/// The pixels of an area. This and the following are false, with nothing touched, for a type that is not numeric only.
OVIX_REDUCE_API bool GetStats(CStats& stats, STypedData data, const u8* status, u16 width, u16 height, SArea area);
/// Horizontal runs in array order.
OVIX_REDUCE_API bool GetStats(CStats& stats, STypedData data, const u8* status, u16 width, u16 height,
                              const TArray<SScanLine>& lines);
/// The pixels at `count` frame indices.
OVIX_REDUCE_API bool GetStats(CStats& stats, STypedData data, const u8* status, u16 width, u16 height,
                              const u32* indices, u32 count);
/// The pixels of an area. The mask is taken and not looked at.
OVIX_REDUCE_API bool GetStats(CStats& stats, STypedData data, const u8* status, u16 width, u16 height, SArea area,
                              const u8* mask, u32 maskStride);

}  // namespace ovix::reduce
