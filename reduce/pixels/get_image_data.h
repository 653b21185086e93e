#pragma once

#include "core/typed_data.h"
#include "reduce/api.h"

/// Extraction of selected pixels with a change of numeric type.
///
/// The source is a whole frame; the destination is compact: it takes one element for each selected pixel, in visiting
/// order. Values move as `NumericCast` tells: nothing saturates and nothing is rounded. All ten numeric types are taken
/// on both sides; any other type gives false, with nothing touched.
///
/// `sourceStatus` is a preset map beside the source, `destinationStatus` a compact buffer beside the destination;
/// either may be null. With both, each pixel's status is copied along. With a destination status alone it comes out all
/// 0; a source status alone is not looked at.
///
/// With both status buffers the area and the scan-line form give every pixel of a run the value and the status of
/// column 0 of its row.
///
/// The kernels keep no state, take no memory and run on the caller's thread. Buffers belong to the caller and must
/// not overlap.
namespace ovix::reduce {

/// The pixels at `count` frame indices.
OVIX_REDUCE_API bool GetImageData(STypedData source, const u8* sourceStatus, STypedData destination,
                                  u8* destinationStatus, const u32* indices, u32 count);
/// A rectangle of a frame that is `width` wide. The height is not read.
OVIX_REDUCE_API bool GetImageData(STypedData source, const u8* sourceStatus, STypedData destination,
                                  u8* destinationStatus, u16 width, u16 height, SArea area);
/// Horizontal runs in array order.
OVIX_REDUCE_API bool GetImageData(STypedData source, const u8* sourceStatus, STypedData destination,
                                  u8* destinationStatus, u16 width, u16 height, const TArray<SScanLine>& lines);
/// The pixels of a rectangle whose mask[row * maskStride + column] is not 0. The mask covers the frame, not the area.
OVIX_REDUCE_API bool GetImageData(STypedData source, const u8* sourceStatus, STypedData destination,
                                  u8* destinationStatus, u16 width, u16 height, SArea area, const u8* mask,
                                  u32 maskStride);

}  // namespace ovix::reduce
