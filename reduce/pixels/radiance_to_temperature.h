#pragma once

#include "core/typed_data.h"
#include "reduce/api.h"
#include "reduce/pixels/radiance_params.h"
#include "reduce/pixels/temperature_params.h"

/// Images of radiances to images of temperatures by calibration records, which choose the model (see
/// temperature_params.h). The table clamps, and the polynomial is that of the images, in double throughout.
/// `signalScale` divides the radiance, and the temperature comes in the scale `tempType`.
///
/// Source and destination are `Flt32` or `Flt64`: any other pair gives false with nothing written. The destination is
/// compact.
///
/// The per-preset forms take from `params` the record of the pixel's preset, which `presets` holds for each frame
/// pixel; null means preset 0 for all. Where the flag of a preset in `presetsValid` is not set, its table is passed
/// over and the next model runs; null sets none.
namespace ovix::reduce {

/// The first `count` pixels.
OVIX_REDUCE_API bool RadianceToTemperature(STypedData source, STypedData destination, u32 count,
                                           const STemperatureParams& params, const SCommonParams& common);
OVIX_REDUCE_API bool RadianceToTemperature(STypedData source, STypedData destination, const u8* presets, u32 count,
                                           const bool* presetsValid, const STemperatureParams* params,
                                           const SCommonParams& common);

/// The pixels at `count` frame indices.
OVIX_REDUCE_API bool RadianceToTemperature(STypedData source, STypedData destination, const u32* indices, u32 count,
                                           const STemperatureParams& params, const SCommonParams& common);
OVIX_REDUCE_API bool RadianceToTemperature(STypedData source, STypedData destination, const u8* presets,
                                           const u32* indices, u32 count, const bool* presetsValid,
                                           const STemperatureParams* params, const SCommonParams& common);

/// A rectangle of a frame that is `width` wide. The height is not read.
OVIX_REDUCE_API bool RadianceToTemperature(STypedData source, STypedData destination, u16 width, u16 height, SArea area,
                                           const STemperatureParams& params, const SCommonParams& common);
OVIX_REDUCE_API bool RadianceToTemperature(STypedData source, STypedData destination, const u8* presets, u16 width,
                                           u16 height, SArea area, const bool* presetsValid,
                                           const STemperatureParams* params, const SCommonParams& common);

/// Horizontal runs in array order.
OVIX_REDUCE_API bool RadianceToTemperature(STypedData source, STypedData destination, u16 width, u16 height,
                                           const TArray<SScanLine>& lines, const STemperatureParams& params,
                                           const SCommonParams& common);
OVIX_REDUCE_API bool RadianceToTemperature(STypedData source, STypedData destination, const u8* presets, u16 width,
                                           u16 height, const TArray<SScanLine>& lines, const bool* presetsValid,
                                           const STemperatureParams* params, const SCommonParams& common);

/// The pixels of a rectangle whose mask[row * maskStride + column] is not 0.
OVIX_REDUCE_API bool RadianceToTemperature(STypedData source, STypedData destination, u16 width, u16 height, SArea area,
                                           const u8* mask, u32 maskStride, const STemperatureParams& params,
                                           const SCommonParams& common);
OVIX_REDUCE_API bool RadianceToTemperature(STypedData source, STypedData destination, const u8* presets, u16 width,
                                           u16 height, SArea area, const u8* mask, u32 maskStride,
                                           const bool* presetsValid, const STemperatureParams* params,
                                           const SCommonParams& common);

}  // namespace ovix::reduce
