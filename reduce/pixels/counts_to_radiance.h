#pragma once

#include "reduce/api.h"
#include "reduce/pixels/radiance_params.h"

/// Images of counts to images of radiance by calibration records: the scalar `ToRadiance` for each selected pixel with
/// the record's coefficients and order, its per-pixel backgrounds if given, else its background, and `radianceScale`.
///
/// The source is of any numeric type, the destination `Flt32` or `Flt64`, and compact: any other pair gives false with
/// nothing written. An order that is none gives true, and the pixels stay as they were. Powers are in double in all
/// forms.
///
/// The per-preset forms take from `params` the record of the pixel's preset, which `presets` holds for each frame
/// pixel; null means preset 0 for all. The record's per-pixel backgrounds are used only where `usePixelBackgrounds` of
/// the preset is true; a null array of flags uses none.
namespace ovix::reduce {

/// The first `count` pixels.
OVIX_REDUCE_API bool CountsToRadiance(STypedData source, STypedData destination, u32 count,
                                      const SRadianceParams& params, const SCommonParams& common);
OVIX_REDUCE_API bool CountsToRadiance(STypedData source, STypedData destination, const u8* presets, u32 count,
                                      const bool* usePixelBackgrounds, const SRadianceParams* params,
                                      const SCommonParams& common);

/// The pixels at `count` frame indices.
OVIX_REDUCE_API bool CountsToRadiance(STypedData source, STypedData destination, const u32* indices, u32 count,
                                      const SRadianceParams& params, const SCommonParams& common);
OVIX_REDUCE_API bool CountsToRadiance(STypedData source, STypedData destination, const u8* presets, const u32* indices,
                                      u32 count, const bool* usePixelBackgrounds, const SRadianceParams* params,
                                      const SCommonParams& common);

/// A rectangle of a frame that is `width` wide. The height is not read.
OVIX_REDUCE_API bool CountsToRadiance(STypedData source, STypedData destination, u16 width, u16 height, SArea area,
                                      const SRadianceParams& params, const SCommonParams& common);
OVIX_REDUCE_API bool CountsToRadiance(STypedData source, STypedData destination, const u8* presets, u16 width,
                                      u16 height, SArea area, const bool* usePixelBackgrounds,
                                      const SRadianceParams* params, const SCommonParams& common);

/// Horizontal runs in array order.
OVIX_REDUCE_API bool CountsToRadiance(STypedData source, STypedData destination, u16 width, u16 height,
                                      const TArray<SScanLine>& lines, const SRadianceParams& params,
                                      const SCommonParams& common);
OVIX_REDUCE_API bool CountsToRadiance(STypedData source, STypedData destination, const u8* presets, u16 width,
                                      u16 height, const TArray<SScanLine>& lines, const bool* usePixelBackgrounds,
                                      const SRadianceParams* params, const SCommonParams& common);

/// The pixels of a rectangle whose mask[row * maskStride + column] is not 0.
OVIX_REDUCE_API bool CountsToRadiance(STypedData source, STypedData destination, u16 width, u16 height, SArea area,
                                      const u8* mask, u32 maskStride, const SRadianceParams& params,
                                      const SCommonParams& common);
OVIX_REDUCE_API bool CountsToRadiance(STypedData source, STypedData destination, const u8* presets, u16 width,
                                      u16 height, SArea area, const u8* mask, u32 maskStride,
                                      const bool* usePixelBackgrounds, const SRadianceParams* params,
                                      const SCommonParams& common);

}  // namespace ovix::reduce
